// Writes the sample project: procedural cobblestone and moss materials as PNG
// files, texture records for them, one surface per material, a mixed surface
// of the two through a blob mask, and a direction and a scale map.
//
//   ondrels-make-sample OUTPUT_DIRECTORY
//
// Texture records hold absolute paths, so the project is made where it will be
// used (the build tree) rather than committed.

#include "ImageFile.h"
#include "LogMessage.h"
#include "MessageHandler.h"
#include "ProceduralTextures.h"
#include "ProjectData.h"
#include "ProjectSaver.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <cstring>

using Velmor::ProjectData;

namespace {

const uint32_t imageSize = 512;

// The folders this tool fills; cleared first so that records of an older
// sample layout do not linger.
const char* const generatedFolders[] = {"Images", "Textures", "Models", "Utilities", "Surfaces", "Cache"};

bool anyErrors = false;

// 8-bit PNG of `image`. The file writer truncates, so shift by half a step
// to round to the nearest byte instead.
bool saveEightBit(const QString& path, const Image& image)
{
    Image rounded(image);
    rounded.sampleType = UInt8;
    for (uint64_t i = 0; i < rounded.floatCount(); ++i)
        rounded.data[i] = std::clamp(rounded.data[i] + 0.5f / 255.0f, 0.0f, 1.0f);
    if (!saveImage(path, rounded)) {
        std::fprintf(stderr, "Cannot write %s\n", qPrintable(path));
        return false;
    }
    return true;
}

struct MaterialTextures
{
    ProjectData::TextureData* color = nullptr;
    ProjectData::TextureData* normal = nullptr;
    ProjectData::TextureData* displacement = nullptr;
    ProjectData::TextureData* roughness = nullptr;
};

// Saves the four maps as <stem>_color.png ... and makes texture records of
// them; file stems follow the PBR import's naming so the files can also be
// imported by hand.
bool addMaterial(ProjectData& store, const QString& imageDir, const QString& stem,
                 const ProceduralTextures::Material& material, MaterialTextures& textures)
{
    const QString base = imageDir + QLatin1Char('/') + stem;
    const QString color = base + QStringLiteral("_color.png");
    const QString normal = base + QStringLiteral("_normal.png");
    const QString displacement = base + QStringLiteral("_displacement.png");
    const QString roughness = base + QStringLiteral("_roughness.png");
    if (!saveEightBit(color, material.color) || !saveEightBit(normal, material.normal)
        || !saveEightBit(displacement, material.height) || !saveEightBit(roughness, material.roughness))
        return false;

    textures.color = store.addTexture(color);
    textures.normal = store.addTexture(normal);
    textures.displacement = store.addTexture(displacement);
    textures.roughness = store.addTexture(roughness);
    // As the PBR import converts an 8-bit normal file.
    textures.normal->image.toNormalMap(false, false, true, true);
    return textures.normal->image.format == Normal;
}

ProjectData::SurfaceData* addMaterialSurface(ProjectData& store, const std::string& name,
                                             const MaterialTextures& textures)
{
    ProjectData::SurfaceData* surface = store.addSurface(name);
    const std::pair<const char*, ProjectData::TextureData*> layers[] = {
        {"color", textures.color},
        {"normal", textures.normal},
        {"displacement", textures.displacement},
        {"roughness", textures.roughness},
    };
    int32_t mode = 0;
    for (const auto& [layerName, texture] : layers) {
        ProjectData::SurfaceLayer& layer = surface->addLayer();
        layer.name = layerName;
        layer.texture = texture;
        layer.mode = ProjectData::LayerMode(mode++);
    }
    return surface;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const char* usage = "usage: %s OUTPUT_DIRECTORY\n"
                        "Writes the generated sample project into OUTPUT_DIRECTORY.\n";
    if (argc == 2 && (std::strcmp(argv[1], "-h") == 0 || std::strcmp(argv[1], "--help") == 0)) {
        std::printf(usage, argv[0]);
        return 0;
    }
    // Any other option is a mistake, not a folder name ("--" ends the options).
    const int first = argc == 3 && std::strcmp(argv[1], "--") == 0 ? 2 : 1;
    if (argc != first + 1 || (first == 1 && argv[1][0] == '-')) {
        std::fprintf(stderr, usage, argv[0]);
        return 2;
    }
    // Errors from the image and project code arrive as log messages.
    QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage, [](const QString& text, int severity) {
        if (severity == Error) {
            anyErrors = true;
            std::fprintf(stderr, "%s\n", qPrintable(text));
        }
    });

    const QString projectDir = QFileInfo(QString::fromLocal8Bit(argv[first])).absoluteFilePath();
    QDir root(projectDir);
    for (const char* folder : generatedFolders)
        if (root.exists(folder) && !QDir(root.filePath(folder)).removeRecursively()) {
            std::fprintf(stderr, "Cannot clear %s\n", qPrintable(root.filePath(folder)));
            return 1;
        }
    const QString imageDir = root.filePath(QStringLiteral("Images"));
    if (!QDir().mkpath(imageDir)) {
        std::fprintf(stderr, "Cannot create %s\n", qPrintable(imageDir));
        return 1;
    }

    ProjectData store;
    MaterialTextures stones, moss;
    if (!addMaterial(store, imageDir, QStringLiteral("cobblestones"), ProceduralTextures::cobblestones(imageSize, 17),
                     stones)
        || !addMaterial(store, imageDir, QStringLiteral("moss"), ProceduralTextures::moss(imageSize, 29), moss))
        return 1;

    const QString maskPath = imageDir + QStringLiteral("/moss_mask.png");
    if (!saveEightBit(maskPath, ProceduralTextures::blobMask(imageSize, 5)))
        return 1;
    ProjectData::TextureData* mask = store.addTexture(maskPath);

    ProjectData::DirectionMapData* directions = store.addDirectionMap();
    directions->name = "Swirl";
    directions->image = ProceduralTextures::swirlDirections(imageSize);
    ProjectData::ScaleMapData* scales = store.addScaleMap();
    scales->name = "ScaleGradient";
    scales->image = ProceduralTextures::scaleGradient(imageSize);

    ProjectData::SurfaceData* stoneSurface = addMaterialSurface(store, "Cobblestones", stones);
    ProjectData::SurfaceData* mossSurface = addMaterialSurface(store, "Moss", moss);
    ProjectData::MixedSurfaceData* mixed = store.addMixedSurface("MossyCobblestones");
    mixed->whiteSurface = mossSurface;
    mixed->blackSurface = stoneSurface;
    mixed->maskTexture = mask;
    mixed->maskChannel = 0;
    for (ProjectData::SurfaceData* surface : {stoneSurface, mossSurface, static_cast<ProjectData::SurfaceData*>(mixed)}) {
        surface->directionMap = directions;
        surface->scaleMap = scales;
    }
    mixed->updateMixedLayers();

    Velmor::ProjectSaver saver(projectDir);
    if (!saver.save(store) || anyErrors) {
        std::fprintf(stderr, "Sample project incomplete: %s\n", qPrintable(projectDir));
        return 1;
    }
    std::printf("Sample project written to %s\n", qPrintable(projectDir));
    return 0;
}
