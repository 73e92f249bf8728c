#include "PreviewDataLoader.h"

#include "LogMessage.h"

#include <QDir>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QtConcurrent>

namespace {

struct ImportResult
{
    MeshData mesh;
    bool ok = false;
};

} // namespace

PreviewDataLoader::PreviewDataLoader(QObject* parent)
    : QObject(parent)
{
    qRegisterMetaType<MeshData>("MeshData");
    qRegisterMetaType<EnvironmentMap>("EnvironmentMap");
}

void PreviewDataLoader::loadMesh(int slot, const QString& path)
{
    if (slot < 0 || slot >= int(meshRequests.size()))
        return;
    const int request = ++meshRequests[slot];
    if (path.isEmpty())
        return;
    if (!QFileInfo::exists(path)) {
        logMessage(Warning, QStringLiteral("Mesh file %1 not found (working directory %2).")
                                .arg(path, QDir::currentPath()));
        return;
    }
    auto* watcher = new QFutureWatcher<ImportResult>(this);
    connect(watcher, &QFutureWatcher<ImportResult>::finished, this, [this, watcher, slot, request, path] {
        const ImportResult result = watcher->result();
        watcher->deleteLater();
        if (request != meshRequests[slot])
            return;
        if (!result.ok) {
            logMessage(Error, QStringLiteral("Could not read the model file %1: assimp cannot import it.").arg(path));
            return;
        }
        logMessage(Success, QStringLiteral("Loaded model %1: %2 triangles, %3 UV islands.")
                                .arg(path)
                                .arg(result.mesh.triangleCount())
                                .arg(result.mesh.islandCount));
        emit meshLoaded(slot, result.mesh);
    });
    watcher->setFuture(QtConcurrent::run([path] {
        ImportResult result;
        result.mesh = importMeshFile(path, &result.ok);
        return result;
    }));
}

void PreviewDataLoader::loadEnvironment(const QString& directory)
{
    const int request = ++environmentRequest;
    auto* watcher = new QFutureWatcher<EnvironmentMap>(this);
    connect(watcher, &QFutureWatcher<EnvironmentMap>::finished, this, [this, watcher, request] {
        const EnvironmentMap map = watcher->result();
        watcher->deleteLater();
        if (request == environmentRequest)
            emit environmentLoaded(map);
    });
    watcher->setFuture(QtConcurrent::run([directory] { return loadEnvironmentSet(directory); }));
}
