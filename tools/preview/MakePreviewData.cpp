// Writes the 3D preview's data: the sample meshes Bridge.obj and Tree.obj and
// the environment map sets HotelRoom, Venice and Studio (envmap1.hdr to
// envmap4.hdr each: the sharp map, then three smaller, more blurred levels
// that the preview binds as mip levels 1 to 3).
//
//   ondrels-make-preview-data DATA_DIRECTORY

#include "EnvironmentScenes.h"
#include "MessageHandler.h"
#include "SampleMeshes.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: ondrels-make-preview-data DATA_DIRECTORY\n");
        return 2;
    }
    QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage,
                     [](const QString& text, int) { std::fprintf(stderr, "%s\n", qPrintable(text)); });
    const QDir data(QString::fromLocal8Bit(argv[1]));
    bool ok = data.mkpath(QStringLiteral("Meshes"));

    const ObjWriter bridge = makeBridge(), tree = makeTree();
    ok = bridge.write(data.filePath(QStringLiteral("Meshes/Bridge.obj"))) && ok;
    ok = tree.write(data.filePath(QStringLiteral("Meshes/Tree.obj"))) && ok;
    std::printf("Bridge.obj: %d triangles, Tree.obj: %d triangles\n", bridge.triangleCount(), tree.triangleCount());

    for (const QString& name : environmentSceneNames()) {
        const QString folder = QStringLiteral("Textures/EnvMaps/") + name;
        ok = data.mkpath(folder) && ok;
        const EnvironmentMap set = blurredLevels(renderEnvironmentScene(name, 1024, 512));
        for (int k = 0; k < environmentLevelCount; ++k)
            ok = saveRadianceHdr(data.filePath(folder + QStringLiteral("/envmap%1.hdr").arg(k + 1)), set.levels[k]) && ok;
    }
    if (!ok)
        std::fprintf(stderr, "Could not write every preview data file below %s\n", argv[1]);
    return ok ? 0 : 1;
}
