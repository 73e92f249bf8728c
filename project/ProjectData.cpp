#include "ProjectData.h"

#include "ImageFile.h"

#include <QDir>

#include <algorithm>
#include <cctype>

namespace Velmor {

namespace {

const uint32_t defaultRecordImageSize = 512;

void fillImage(Image& image, const float* pixel)
{
    const uint32_t channels = image.channels();
    const uint64_t count = image.pixelCount();
    for (uint64_t i = 0; i < count; ++i)
        std::copy(pixel, pixel + channels, image.data + i * channels);
}

// Erases `record` from `records` (keeping the order of the rest) and
// destroys it; false when it is not there.
template <class Record>
bool eraseRecord(std::vector<std::unique_ptr<Record>>& records, const void* record)
{
    auto found = std::find_if(records.begin(), records.end(),
                              [record](const std::unique_ptr<Record>& r) { return r.get() == record; });
    if (found == records.end())
        return false;
    records.erase(found);
    return true;
}

template <class Record>
Record* findById(const std::vector<std::unique_ptr<Record>>& records, int32_t id)
{
    for (const auto& record : records)
        if (record->id == id)
            return record.get();
    return nullptr;
}

} // namespace

ProjectData::TextureData::TextureData()
    : image(defaultRecordImageSize, defaultRecordImageSize, RGB)
{
}

ProjectData::TextureData::TextureData(const QString& filePath)
    : path(filePath)
    , image(defaultRecordImageSize, defaultRecordImageSize, RGB)
{
    ImageFileInfo info;
    loadFailed = !loadImage(info, filePath, image);
}

QString ProjectData::TextureData::unusableReason() const
{
    return QStringLiteral("Texture '%1' (%2) could not be loaded")
        .arg(QString::fromStdString(name), QDir::toNativeSeparators(path));
}

ProjectData::DirectionMapData::DirectionMapData()
    : image(defaultRecordImageSize, defaultRecordImageSize, Normal)
{
    const float up[3] = {0.0f, 1.0f, 0.0f};
    fillImage(image, up);
}

ProjectData::ScaleMapData::ScaleMapData()
    : image(defaultRecordImageSize, defaultRecordImageSize, Gray)
{
    const float one = 1.0f;
    fillImage(image, &one);
}

ProjectData::ProjectData()
    : projectMask(defaultRecordImageSize, defaultRecordImageSize, Gray)
    , secondProjectImage(defaultRecordImageSize, defaultRecordImageSize, RGB)
{
    const float one = 1.0f;
    fillImage(projectMask, &one);
}

ProjectData::~ProjectData()
{
    // Mixed surfaces point at plain ones; destroy them first so that no
    // destructor ever sees a freed surface.
    for (auto& surface : surfaces)
        if (dynamic_cast<MixedSurfaceData*>(surface.get()))
            surface.reset();
}

std::string ProjectData::nameFromPath(const QString& path)
{
    const int slash = std::max(path.lastIndexOf('/'), path.lastIndexOf('\\'));
    QString name = path.mid(slash + 1);
    const int dot = name.lastIndexOf('.');
    if (dot >= 0)
        name.truncate(dot);
    return name.toStdString();
}

ProjectData::TextureData* ProjectData::addTexture(const QString& path, const std::string& /*kind*/)
{
    auto texture = std::make_unique<TextureData>(path);
    texture->name = makeUniqueName(nameFromPath(path), textures);
    textures.push_back(std::move(texture));
    return textures.back().get();
}

ProjectData::ModelData* ProjectData::addModel(const QString& path, const std::string& /*kind*/)
{
    auto model = std::make_unique<ModelData>();
    model->path = path;
    model->name = makeUniqueName(nameFromPath(path), models);
    models.push_back(std::move(model));
    return models.back().get();
}

std::string ProjectData::mapName(const std::string& name)
{
    std::string word = name.empty() ? std::string("_") : name;
    for (char& c : word)
        if (std::isspace(static_cast<unsigned char>(c)))
            c = '_';
    return word;
}

namespace {
// Unique among the other maps of the list: the renamed one does not count.
template <class Map>
std::string renamedMap(const Map* map, const std::string& name, const std::vector<std::unique_ptr<Map>>& maps)
{
    const std::string base = ProjectData::mapName(name);
    std::string candidate = base;
    for (int counter = 1;; ++counter) {
        const bool taken = std::any_of(maps.begin(), maps.end(), [&](const std::unique_ptr<Map>& other) {
            return other.get() != map && other->name == candidate;
        });
        if (!taken)
            return candidate;
        candidate = base + "_" + std::to_string(counter);
    }
}
} // namespace

void ProjectData::renameDirectionMap(DirectionMapData* map, const std::string& name)
{
    map->name = renamedMap(map, name, directionMaps);
}

void ProjectData::renameScaleMap(ScaleMapData* map, const std::string& name)
{
    map->name = renamedMap(map, name, scaleMaps);
}

ProjectData::DirectionMapData* ProjectData::addDirectionMap(const std::string& /*label*/)
{
    auto map = std::make_unique<DirectionMapData>();
    map->name = makeUniqueName("DirMap", directionMaps);
    directionMaps.push_back(std::move(map));
    return directionMaps.back().get();
}

ProjectData::ScaleMapData* ProjectData::addScaleMap(const std::string& /*label*/)
{
    auto map = std::make_unique<ScaleMapData>();
    map->name = makeUniqueName("ScaleMap", scaleMaps);
    scaleMaps.push_back(std::move(map));
    return scaleMaps.back().get();
}

ProjectData::SurfaceData* ProjectData::addSurface(const std::string& baseName)
{
    surfaces.push_back(std::make_unique<SurfaceData>(this, makeUniqueName(baseName, surfaces)));
    return surfaces.back().get();
}

ProjectData::MixedSurfaceData* ProjectData::addMixedSurface(const std::string& baseName)
{
    auto mixed = std::make_unique<MixedSurfaceData>(this, makeUniqueName(baseName, surfaces));
    MixedSurfaceData* result = mixed.get();
    surfaces.push_back(std::move(mixed));
    return result;
}

void ProjectData::removeTexture(TextureData* texture)
{
    if (!texture || std::none_of(textures.begin(), textures.end(),
                                 [texture](const auto& t) { return t.get() == texture; }))
        return;
    for (auto& surface : surfaces) {
        if (surface->maskTexture == texture)
            surface->maskTexture = nullptr;
        for (SurfaceLayer& layer : surface->layers)
            if (layer.texture == texture)
                layer.texture = nullptr;
    }
    eraseRecord(textures, texture);
}

void ProjectData::removeModel(ModelData* model)
{
    eraseRecord(models, model);
}

void ProjectData::removeDirectionMap(DirectionMapData* map)
{
    if (!map)
        return;
    for (auto& surface : surfaces)
        if (surface->directionMap == map)
            surface->directionMap = nullptr;
    eraseRecord(directionMaps, map);
}

void ProjectData::removeScaleMap(ScaleMapData* map)
{
    if (!map)
        return;
    for (auto& surface : surfaces)
        if (surface->scaleMap == map)
            surface->scaleMap = nullptr;
    eraseRecord(scaleMaps, map);
}

void ProjectData::removeSurface(SurfaceData* surface)
{
    if (!surface || std::none_of(surfaces.begin(), surfaces.end(),
                                 [surface](const auto& s) { return s.get() == surface; }))
        return;
    for (auto& other : surfaces) {
        if (auto* mixed = dynamic_cast<MixedSurfaceData*>(other.get())) {
            if (mixed->whiteSurface == surface)
                mixed->whiteSurface = nullptr;
            if (mixed->blackSurface == surface)
                mixed->blackSurface = nullptr;
        }
    }
    eraseRecord(surfaces, surface);
}

ProjectData::TextureData* ProjectData::textureById(int32_t id) const
{
    return findById(textures, id);
}

ProjectData::DirectionMapData* ProjectData::directionMapById(int32_t id) const
{
    return findById(directionMaps, id);
}

ProjectData::ScaleMapData* ProjectData::scaleMapById(int32_t id) const
{
    return findById(scaleMaps, id);
}

ProjectData::SurfaceData* ProjectData::surfaceById(int32_t id) const
{
    return findById(surfaces, id);
}

} // namespace Velmor
