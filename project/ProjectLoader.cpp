#include "ProjectLoader.h"

#include "CacheFiles.h"
#include "LogMessage.h"
#include "RecordFiles.h"

#include <QDir>
#include <QFileInfo>

namespace Velmor {

ProjectLoader::ProjectLoader(const QString& projectDirectory)
    : directory(projectDirectory)
{
}

QStringList ProjectLoader::recordFiles(const QString& folder, const QStringList& extensions, const char* warning) const
{
    if (!QFileInfo(folder).isDir()) {
        logMessage(Warning, QString::fromUtf8(warning) + folder);
        return {};
    }
    QStringList filters;
    for (const QString& extension : extensions)
        filters << QStringLiteral("*") + extension;
    // Hidden files too: a record named ".wip" is saved as ".wip.vms".
    QStringList files = QDir(folder).entryList(filters, QDir::Files | QDir::Hidden | QDir::CaseSensitive, QDir::Name);
    // A name that is not valid UTF-8 comes back from the listing with
    // replacement characters and could not be opened under it.
    for (auto it = files.begin(); it != files.end();) {
        if (it->contains(QChar::ReplacementCharacter)) {
            logMessage(Warning, QStringLiteral("Skipping %1/%2: its file name is not valid UTF-8").arg(folder, *it));
            it = files.erase(it);
        } else {
            ++it;
        }
    }
    return files;
}

std::unique_ptr<ProjectData> ProjectLoader::load()
{
    auto store = std::make_unique<ProjectData>();

    const QString cacheDir = directory + QStringLiteral("/Cache");
    readMaskCache(cacheDir + QStringLiteral("/Mask.cache"), *store);

    const QString texturesDir = directory + QStringLiteral("/Textures");
    for (const QString& file : recordFiles(texturesDir, {QStringLiteral(".vmt")},
                                           "Texture directory does not exists, no textures will be loaded: ")) {
        logMessage(Info, QStringLiteral("Loading texture file: ") + file);
        readTextureFile(texturesDir + QLatin1Char('/') + file, *store);
    }

    const QString modelsDir = directory + QStringLiteral("/Models");
    for (const QString& file : recordFiles(modelsDir, {QStringLiteral(".vmm")},
                                           "Model directory does not exists, no models will be loaded: ")) {
        logMessage(Info, QStringLiteral("Loading model file: ") + file);
        readModelFile(modelsDir + QLatin1Char('/') + file, *store);
    }

    const QString utilitiesDir = directory + QStringLiteral("/Utilities");
    for (const QString& file :
         recordFiles(utilitiesDir, {QStringLiteral(".vdm"), QStringLiteral(".vsm")},
                     "Utilities directory does not exists, no utility nodes will be loaded: ")) {
        const QString path = utilitiesDir + QLatin1Char('/') + file;
        if (file.endsWith(QStringLiteral(".vdm"))) {
            logMessage(Info, QStringLiteral("Loading direction map file: ") + file);
            readDirectionMapFile(path, *store);
        } else {
            logMessage(Info, QStringLiteral("Loading scale map file: ") + file);
            readScaleMapFile(path, *store);
        }
    }

    // Plain surfaces first: a mixed surface refers to them by ID.
    const QString surfacesDir = directory + QStringLiteral("/Surfaces");
    const QStringList surfaceFiles =
        recordFiles(surfacesDir, {QStringLiteral(".vms"), QStringLiteral(".vmsm")},
                    "Surface directory does not exists, no surfaces will be loaded: ");
    for (const QString& file : surfaceFiles) {
        if (file.endsWith(QStringLiteral(".vms"))) {
            logMessage(Info, QStringLiteral("Loading surface file: ") + file);
            readSurfaceFile(surfacesDir + QLatin1Char('/') + file, *store);
        }
    }
    for (const QString& file : surfaceFiles) {
        if (file.endsWith(QStringLiteral(".vmsm"))) {
            logMessage(Info, QStringLiteral("Loading mixed surface file: ") + file);
            readMixedSurfaceFile(surfacesDir + QLatin1Char('/') + file, cacheDir, *store);
        }
    }
    return store;
}

} // namespace Velmor
