#pragma once

#include "EnvironmentMap.h"
#include "MeshData.h"

#include <QObject>
#include <QString>

#include <array>

// Imports mesh files and environment map sets off the GUI thread
// (QtConcurrent) and hands the results back on it. A newer request for the
// same slot makes an older, still running one stale: its result is dropped.
class PreviewDataLoader : public QObject
{
    Q_OBJECT
public:
    // Mesh slots are the preview's mesh choices (4 model, 5 Bridge, 6 Tree).
    explicit PreviewDataLoader(QObject* parent = nullptr);

    void loadMesh(int slot, const QString& path);
    // `directory` holds envmap1.hdr to envmap4.hdr.
    void loadEnvironment(const QString& directory);

signals:
    // Emitted for readable files only; the log says what went wrong otherwise.
    void meshLoaded(int slot, const MeshData& mesh);
    void environmentLoaded(const EnvironmentMap& environment);

private:
    std::array<int, 8> meshRequests{};
    int environmentRequest = 0;
};
