// Load and save times of the two most common texture files at 4096 x 4096:
// 8-bit RGB PNG and 16-bit RGB TIFF. Run ondrels-bench and read the medians.
#include "ImageFile.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>

namespace {
constexpr uint32_t benchSide = 4096;

// A gradient with fine noise, so that the encoders compress about as much as
// they do on real textures (a flat gradient would flatter them).
Image textureLikeImage(uint32_t sampleType)
{
    Image image(benchSide, benchSide, RGB);
    image.sampleType = sampleType;
    uint32_t state = 12345;
    for (uint64_t i = 0; i < image.pixelCount(); ++i) {
        const uint32_t x = uint32_t(i % benchSide), y = uint32_t(i / benchSide);
        for (uint32_t k = 0; k < 3; ++k) {
            state = state * 214013u + 2531011u;
            const float noise = float((state >> 16) & 0x7FFF) / 32767.0f;
            const float base = 0.5f + 0.3f * std::sin(0.01f * float(x + 7 * k)) * std::cos(0.013f * float(y));
            image.data[3 * i + k] = std::fmin(1.0f, std::fmax(0.0f, base + 0.1f * (noise - 0.5f)));
        }
    }
    return image;
}

const QString& benchFolder()
{
    static QTemporaryDir folder;
    static const QString path = folder.path();
    return path;
}

// Writes the file once, outside any timing.
QString preparedFile(const char* name, uint32_t sampleType)
{
    const QString path = benchFolder() + QLatin1Char('/') + QLatin1String(name);
    if (!QFile::exists(path) && !saveImage(path, textureLikeImage(sampleType)))
        std::abort();
    return path;
}

void loadBench(benchmark::State& state, const char* name, uint32_t sampleType)
{
    const QString path = preparedFile(name, sampleType);
    for (auto _ : state) {
        ImageFileInfo info;
        Image image;
        if (!loadImage(info, path, image))
            state.SkipWithError("load failed");
        benchmark::DoNotOptimize(image.data);
    }
}

void saveBench(benchmark::State& state, const char* name, uint32_t sampleType)
{
    const Image image = textureLikeImage(sampleType);
    const QString path = benchFolder() + QStringLiteral("/saved-") + QLatin1String(name);
    for (auto _ : state)
        if (!saveImage(path, image))
            state.SkipWithError("save failed");
}

void LoadPng8Rgb4096(benchmark::State& state) { loadBench(state, "rgb8.png", UInt8); }
void SavePng8Rgb4096(benchmark::State& state) { saveBench(state, "rgb8.png", UInt8); }
void LoadTiff16Rgb4096(benchmark::State& state) { loadBench(state, "rgb16.tif", UInt16); }
void SaveTiff16Rgb4096(benchmark::State& state) { saveBench(state, "rgb16.tif", UInt16); }
}

#define IMAGE_FILE_BENCH(name) \
    BENCHMARK(name)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true)->UseRealTime()

IMAGE_FILE_BENCH(LoadPng8Rgb4096);
IMAGE_FILE_BENCH(SavePng8Rgb4096);
IMAGE_FILE_BENCH(LoadTiff16Rgb4096);
IMAGE_FILE_BENCH(SaveTiff16Rgb4096);
