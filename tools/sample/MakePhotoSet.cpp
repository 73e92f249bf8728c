// Writes gravel_color.png, gravel_normal.png and gravel_displacement.png
// (8-bit) into a directory: a texture set that behaves like a photo under
// synthesis, for benchmarking whole ondrels-synth runs.
//   ondrels-make-photo-set DIR [SIZE] [SEED]

#include "ImageFile.h"
#include "ProceduralTextures.h"

#include <QCoreApplication>
#include <QDir>

#include <algorithm>
#include <cstdio>

namespace {

// The file writer truncates to bytes: shift by half a step to round instead.
bool saveEightBit(const QString& path, const Image& image)
{
    Image rounded(image);
    rounded.sampleType = UInt8;
    for (uint64_t i = 0; i < rounded.floatCount(); ++i)
        rounded.data[i] = std::clamp(rounded.data[i] + 0.5f / 255.0f, 0.0f, 1.0f);
    if (saveImage(path, rounded))
        return true;
    std::fprintf(stderr, "Cannot write %s\n", qPrintable(path));
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() < 2 || args.size() > 4) {
        std::fprintf(stderr, "usage: ondrels-make-photo-set DIR [SIZE] [SEED]\n");
        return 2;
    }
    const uint32_t size = args.size() > 2 ? args[2].toUInt() : 512;
    const uint32_t seed = args.size() > 3 ? args[3].toUInt() : 1;
    if (size < 16 || size > 8192) {
        std::fprintf(stderr, "SIZE must be 16 to 8192\n");
        return 2;
    }
    const QDir dir(args[1]);
    if (!QDir().mkpath(dir.path())) {
        std::fprintf(stderr, "Cannot create %s\n", qPrintable(dir.path()));
        return 1;
    }
    const ProceduralTextures::Material gravel = ProceduralTextures::gravel(size, seed);
    const bool ok = saveEightBit(dir.filePath("gravel_color.png"), gravel.color)
        && saveEightBit(dir.filePath("gravel_normal.png"), gravel.normal)
        && saveEightBit(dir.filePath("gravel_displacement.png"), gravel.height);
    return ok ? 0 : 1;
}
