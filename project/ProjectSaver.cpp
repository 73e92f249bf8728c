#include "ProjectSaver.h"

#include "CacheFiles.h"
#include "LogMessage.h"
#include "RecordFiles.h"
#include "SafeFileWriter.h"

#include <QDir>
#include <QFileInfo>

namespace Velmor {

ProjectSaver::ProjectSaver(const QString& projectDirectory)
    : directory(projectDirectory)
{
}

bool ProjectSaver::ensureDirectory(const QString& path)
{
    if (QFileInfo(path).isDir())
        return true;
    logMessage(Info, QStringLiteral("Creating Directory: ") + path);
    if (QDir().mkpath(path))
        return true;
    logMessage(Error, "Directory creation ERROR!!");
    return false;
}

// Deliberately more than "name + extension": names a file system refuses are
// made safe, and two records whose safe names collide get "_1", "_2", ...,
// so that one record never overwrites another's file.
QString ProjectSaver::recordPath(const QString& folder, const std::string& name, const QString& extension)
{
    const QString base = folder + QLatin1Char('/') + safeFileName(name);
    QString path = base + extension;
    for (int counter = 1; usedPaths.contains(path); ++counter)
        path = base + QLatin1Char('_') + QString::number(counter) + extension;
    usedPaths.insert(path);
    return path;
}

bool ProjectSaver::save(ProjectData& store)
{
    usedPaths.clear();
    bool ok = true;

    const QString cacheDir = directory + QStringLiteral("/Cache");
    ok &= ensureDirectory(cacheDir);
    ok &= writeMaskCache(cacheDir + QStringLiteral("/Mask.cache"), store);

    const QString texturesDir = directory + QStringLiteral("/Textures");
    ok &= ensureDirectory(texturesDir);
    for (size_t i = 0; i < store.textures.size(); ++i) {
        ProjectData::TextureData& texture = *store.textures[i];
        texture.id = int32_t(i);
        ok &= writeTextureFile(recordPath(texturesDir, texture.name, QStringLiteral(".vmt")), texture);
    }

    const QString modelsDir = directory + QStringLiteral("/Models");
    ok &= ensureDirectory(modelsDir);
    for (const auto& model : store.models)
        ok &= writeModelFile(recordPath(modelsDir, model->name, QStringLiteral(".vmm")), *model);

    const QString utilitiesDir = directory + QStringLiteral("/Utilities");
    ok &= ensureDirectory(utilitiesDir);
    auto saveMaps = [&](auto& maps, const QString& extension) {
        for (size_t i = 0; i < maps.size(); ++i) {
            maps[i]->id = int32_t(i);
            ok &= writeMapFile(recordPath(utilitiesDir, maps[i]->name, extension), *maps[i]);
        }
    };
    // A name with white space, set by hand, would be stored as another name
    // than its file's, and each load and save would add a copy.
    for (const auto& map : store.directionMaps)
        if (map->name != ProjectData::mapName(map->name))
            store.renameDirectionMap(map.get(), map->name);
    for (const auto& map : store.scaleMaps)
        if (map->name != ProjectData::mapName(map->name))
            store.renameScaleMap(map.get(), map->name);
    saveMaps(store.directionMaps, QStringLiteral(".vdm"));
    saveMaps(store.scaleMaps, QStringLiteral(".vsm"));

    const QString surfacesDir = directory + QStringLiteral("/Surfaces");
    ok &= ensureDirectory(surfacesDir);
    // All surface IDs first: a mixed surface names the surfaces it mixes.
    for (size_t i = 0; i < store.surfaces.size(); ++i)
        store.surfaces[i]->id = int32_t(i);
    for (const auto& surface : store.surfaces) {
        if (auto* mixed = dynamic_cast<ProjectData::MixedSurfaceData*>(surface.get()))
            ok &= writeMixedSurfaceFile(recordPath(surfacesDir, mixed->name, QStringLiteral(".vmsm")), cacheDir, *mixed);
        else
            ok &= writeSurfaceFile(recordPath(surfacesDir, surface->name, QStringLiteral(".vms")), *surface);
    }
    return ok;
}

} // namespace Velmor
