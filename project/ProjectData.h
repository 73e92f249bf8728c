#pragma once

#include "Image.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Velmor {

class ImageSynthesizer;
class SurfaceSynthesisContext;

// The in-memory store of one open project. It owns every record and every
// source image; records refer to each other through plain pointers in memory
// and through IDs in files. IDs are positions in their list, renumbered by
// the saver; a new record has ID 0 until the next save.
class ProjectData
{
public:
    // The PBR purpose of a surface layer, stored as "Mode".
    enum class LayerMode : int32_t
    {
        Color = 0,
        Normal = 1,
        Displacement = 2,
        Roughness = 3,
        Metalness = 4,
        Occlusion = 5
    };

    // One source image, loaded from `path` when the record is made.
    class TextureData
    {
    public:
        // A 512 x 512 RGB placeholder; used for generated textures.
        TextureData();
        // Loads the image file; a file that fails to load leaves the
        // placeholder (the loader logs why) and sets loadFailed.
        explicit TextureData(const QString& path);

        // A failed texture is never synthesized from: the placeholder (or a
        // partly made image) is not the picture the user chose.
        bool usable() const { return !loadFailed && !image.isEmpty(); }
        // "Texture 'name' (file) could not be loaded": why a run refuses it.
        QString unusableReason() const;

        std::string name;
        int32_t id = 0;
        QString path;
        Image image;
        bool loadFailed = false;
    };

    // A mesh file shown in the 3D preview; the mesh itself is not held here.
    class ModelData
    {
    public:
        std::string name;
        uint32_t id = 0; // never written or read
        float rotationX = 0.0f;
        float rotationY = 0.0f;
        float rotationZ = 0.0f;
        float scale = 1.0f;
        QString path;
    };

    // A painted direction field: Normal pixels, (0, 1, 0) when new.
    class DirectionMapData
    {
    public:
        DirectionMapData();

        std::string name;
        int32_t id = 0;
        Image image;
    };

    // A painted scale field: Gray pixels, 1.0 when new.
    class ScaleMapData
    {
    public:
        ScaleMapData();

        std::string name;
        int32_t id = 0;
        Image image;
    };

    class SurfaceLayer
    {
    public:
        std::string name;
        TextureData* texture = nullptr;
        LayerMode mode = LayerMode::Color;
    };

    // A set of layers synthesized together, with the two synthesizers the
    // user chooses between and the state of its synthesis runs.
    class SurfaceData
    {
    public:
        SurfaceData(ProjectData* store, const std::string& name);
        SurfaceData(const SurfaceData&) = delete;
        SurfaceData& operator=(const SurfaceData&) = delete;
        virtual ~SurfaceData();

        // Smallest texture size over the layers; INT32_MAX each without layers.
        virtual void surfaceSize(int32_t& width, int32_t& height) const;

        SurfaceLayer& addLayer();

        // The "SynthesizerMode": type name of the current synthesizer.
        std::string synthesizerMode() const;
        // Makes the synthesizer of that type name current; false (and no
        // change) for an unknown name.
        bool selectSynthesizer(const std::string& typeName);
        ImageSynthesizer* synthesizer() const;
        ImageSynthesizer* synthesizerOfType(const std::string& typeName) const;

        std::string name;
        int32_t id = 0;
        std::vector<SurfaceLayer> layers;
        std::unique_ptr<SurfaceSynthesisContext> synthesisContext;
        TextureData* maskTexture = nullptr;
        DirectionMapData* directionMap = nullptr;
        ScaleMapData* scaleMap = nullptr;
        bool useDirectionMap = true;
        bool useScaleMap = true;
        bool makeInputSeamless = false;
        bool masked = false;
        int32_t maskChannel = 0;
        // "Patch Based Blended" then "Patch Based Cutout"; may be empty only
        // when the engine knows neither name.
        std::vector<std::unique_ptr<ImageSynthesizer>> synthesizers;
        size_t currentSynthesizerIndex = 0;
        ProjectData* store = nullptr;
    };

    // Two surfaces mixed through a black-and-white mask (the mask texture).
    // Its layers are rebuilt by updateMixedLayers, never edited.
    class MixedSurfaceData : public SurfaceData
    {
    public:
        MixedSurfaceData(ProjectData* store, const std::string& name);

        // Size of the mask texture's image.
        void surfaceSize(int32_t& width, int32_t& height) const override;

        // Rebuilds the layers from the white and black surfaces; warns and
        // leaves no layers when the mask or the layer counts are unusable.
        void updateMixedLayers();

        SurfaceData* whiteSurface = nullptr;
        SurfaceData* blackSurface = nullptr;
        bool synthesizeMask = true;
        bool synthesizeWhiteSurface = true;
        bool synthesizeBlackSurface = true;
        bool tileMask = false;
        bool tileWhiteSurface = false;
        bool tileBlackSurface = false;
        bool freezeBlackSurface = false;
        bool freezeWhiteSurface = false;
        bool freezeMask = false;
        int32_t maskFilterMode = 0;
        // The images behind the mixed layers; not part of the texture list.
        std::vector<std::unique_ptr<TextureData>> generatedTextures;
    };

    ProjectData();
    ProjectData(const ProjectData&) = delete;
    ProjectData& operator=(const ProjectData&) = delete;
    ~ProjectData();

    // Creation: each record gets a unique name and goes to the end of its list.
    TextureData* addTexture(const QString& path, const std::string& kind = std::string());
    ModelData* addModel(const QString& path, const std::string& kind = std::string());
    DirectionMapData* addDirectionMap(const std::string& label = std::string());
    ScaleMapData* addScaleMap(const std::string& label = std::string());
    SurfaceData* addSurface(const std::string& baseName);
    MixedSurfaceData* addMixedSurface(const std::string& baseName);

    // Removal destroys the record; references other records hold to it are
    // cleared so that nothing dangles. A record not in the store is ignored.
    void removeTexture(TextureData* texture);
    void removeModel(ModelData* model);
    void removeDirectionMap(DirectionMapData* map);
    void removeScaleMap(ScaleMapData* map);
    void removeSurface(SurfaceData* surface);

    // First record with this ID, or null.
    TextureData* textureById(int32_t id) const;
    DirectionMapData* directionMapById(int32_t id) const;
    ScaleMapData* scaleMapById(int32_t id) const;
    SurfaceData* surfaceById(int32_t id) const;

    // Map names are stored as words in their files: white space becomes "_"
    // (and an empty name "_"), so the file name and the stored name agree.
    static std::string mapName(const std::string& name);
    // Gives the map a name without white space, unique among its kind.
    void renameDirectionMap(DirectionMapData* map, const std::string& name);
    void renameScaleMap(ScaleMapData* map, const std::string& name);

    // File name without folders and extension, in UTF-8.
    static std::string nameFromPath(const QString& path);
    // base, else base_1, base_2, ... : the first name no record in `records`
    // carries.
    template <class Record>
    static std::string makeUniqueName(const std::string& base, const std::vector<std::unique_ptr<Record>>& records);

    std::vector<std::unique_ptr<ModelData>> models;
    std::vector<std::unique_ptr<SurfaceData>> surfaces; // mixed surfaces included
    std::vector<std::unique_ptr<TextureData>> textures;
    std::vector<std::unique_ptr<DirectionMapData>> directionMaps;
    std::vector<std::unique_ptr<ScaleMapData>> scaleMaps;
    Image projectMask;        // 512 x 512 Gray, 1.0 when new; saved as "Mask.cache"
    Image secondProjectImage; // 512 x 512 RGB of zeros for the 2D view; not saved
};

template <class Record>
std::string ProjectData::makeUniqueName(const std::string& base, const std::vector<std::unique_ptr<Record>>& records)
{
    std::string candidate = base;
    int counter = 1;
    bool taken = true;
    while (taken) {
        taken = false;
        for (const auto& record : records) {
            if (record->name == candidate) {
                candidate = base + "_" + std::to_string(counter++);
                taken = true;
                break;
            }
        }
    }
    return candidate;
}

} // namespace Velmor
