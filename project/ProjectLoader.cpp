#include "ProjectLoader.h"

#include "CacheFiles.h"
#include "LogMessage.h"
#include "RecordFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <dirent.h>
#endif

namespace Velmor {

ProjectLoader::ProjectLoader(const QString& projectDirectory)
    : directory(projectDirectory)
{
}

namespace {

// Qt's listing leaves out names it cannot decode; such a record file would
// be skipped without a word, so the raw listing is searched for them.
void reportUndecodableNames(const QString& folder, const QStringList& extensions)
{
#ifdef Q_OS_UNIX
    DIR* dir = opendir(QFile::encodeName(folder).constData());
    if (!dir)
        return;
    while (const dirent* entry = readdir(dir)) {
        const QByteArray name(entry->d_name);
        const QString decoded = QFile::decodeName(name);
        if (QFile::encodeName(decoded) == name)
            continue;
        for (const QString& extension : extensions) {
            if (name.endsWith(extension.toLatin1())) {
                logMessage(Warning, QStringLiteral("Skipping a record file in %1: its file name (%2) is not valid UTF-8")
                                        .arg(folder, decoded));
                break;
            }
        }
    }
    closedir(dir);
#else
    Q_UNUSED(folder);
    Q_UNUSED(extensions);
#endif
}

} // namespace

QStringList ProjectLoader::recordFiles(const QString& folder, const QStringList& extensions, const char* warning) const
{
    if (!QFileInfo(folder).isDir()) {
        logMessage(Warning, QString::fromUtf8(warning) + folder);
        return {};
    }
    QStringList filters;
    for (const QString& extension : extensions)
        filters << QStringLiteral("*") + extension;
    reportUndecodableNames(folder, extensions);
    // Hidden files too: a record named ".wip" is saved as ".wip.vms".
    return QDir(folder).entryList(filters, QDir::Files | QDir::Hidden | QDir::CaseSensitive, QDir::Name);
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
