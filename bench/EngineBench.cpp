// Synthesis speed: a 512 x 512 source of three layers (colour, Normal, Gray
// height) grown to 1024, 2048 and 4096 square with default parameters and a
// fixed seed, for both methods, with and without direction and scale maps,
// by random tries and (at 1024) by the structured search; and the mask
// preparation of a 1024 x 1024 mask. Run ondrels-bench and read
// the medians and the megapixels per second.
#include "LayeredImage.h"
#include "PDG_GridAll.h"
#include "PSGBoundaryAll.h"
#include "PSGMasked.h"
#include "SynthesizerFactory.h"
#include "ImageSynthesizer.h"
#include "MethodNames.h"

#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>

namespace {

// Value noise on a lattice of `cell` pixels, smoothly interpolated.
float latticeNoise(int x, int y, int cell, uint32_t salt)
{
    auto hash = [salt](int i, int j) {
        uint32_t h = uint32_t(i) * 374761393u + uint32_t(j) * 668265263u + salt * 2246822519u;
        h = (h ^ (h >> 13)) * 1274126177u;
        return float((h ^ (h >> 16)) & 0xFFFF) / 65535.0f;
    };
    const int cx = x / cell, cy = y / cell;
    float fx = float(x % cell) / float(cell), fy = float(y % cell) / float(cell);
    fx = fx * fx * (3.0f - 2.0f * fx);
    fy = fy * fy * (3.0f - 2.0f * fy);
    const float top = hash(cx, cy) + (hash(cx + 1, cy) - hash(cx, cy)) * fx;
    const float bottom = hash(cx, cy + 1) + (hash(cx + 1, cy + 1) - hash(cx, cy + 1)) * fx;
    return top + (bottom - top) * fy;
}

// A stony texture: noise at three scales, its slopes as the normal map.
std::unique_ptr<LayeredImage> makeSource(int side)
{
    auto source = std::make_unique<LayeredImage>();
    auto* colour = new Image(side, side, RGB);
    auto* normal = new Image(side, side, Normal);
    auto* height = new Image(side, side, Gray);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            height->pixelAt(x, y)[0] = 0.55f * latticeNoise(x, y, 32, 1) + 0.3f * latticeNoise(x, y, 8, 2)
                + 0.15f * latticeNoise(x, y, 2, 3);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const float h = height->pixelAt(x, y)[0];
            float* c = colour->pixelAt(x, y).values;
            c[0] = 0.3f + 0.5f * h;
            c[1] = 0.25f + 0.45f * h * h;
            c[2] = 0.2f + 0.3f * latticeNoise(x, y, 16, 4);
            const float gx = 4.0f * (height->pixelAt(x + 1, y)[0] - height->pixelAt(x - 1, y)[0]);
            const float gy = 4.0f * (height->pixelAt(x, y + 1)[0] - height->pixelAt(x, y - 1)[0]);
            const float len = std::sqrt(gx * gx + gy * gy + 1.0f);
            float* n = normal->pixelAt(x, y).values;
            n[0] = -gx / len;
            n[1] = -gy / len;
            n[2] = 1.0f / len;
        }
    }
    source->setLayer("Diffuse", colour);
    source->setLayer("Normal", normal);
    source->setLayer("Height", height);
    return source;
}

void fillMaps(Image& direction, Image& scale)
{
    for (uint32_t y = 0; y < direction.height; ++y)
        for (uint32_t x = 0; x < direction.width; ++x) {
            const float angle = 0.02f * float(x) + 0.01f * float(y);
            direction.pixelAt(x, y)[0] = std::sin(angle);
            direction.pixelAt(x, y)[1] = std::cos(angle);
            scale.pixelAt(x, y)[0] = 0.6f + 0.4f * std::sin(0.015f * float(x + y));
        }
}

// Arguments: output side, method (0 blended, 1 cutout), guided (maps or not),
// search (0 random tries, 1 structured).
void BM_Synthesize(benchmark::State& state)
{
    static const std::unique_ptr<LayeredImage> source = makeSource(512);
    const int side = int(state.range(0));
    const char* method = state.range(1) ? Velmor::cutoutMethodName : Velmor::blendedMethodName;
    const bool guided = state.range(2) != 0;
    Image direction(256, 256, RGB);
    Image scale(256, 256, Gray);
    fillMaps(direction, scale);
    std::unique_ptr<Velmor::ImageSynthesizer> synthesizer(Velmor::createSynthesizer(method));
    synthesizer->params->targetWidth = uint32_t(side);
    synthesizer->params->targetHeight = uint32_t(side);
    const bool structured = state.range(3) != 0;
    static_cast<Velmor::ImageSynthesizer::PatchSynthesizerParams*>(synthesizer->params)->sourceSearch =
        structured ? Velmor::SourceSearch::Structured : Velmor::SourceSearch::Random;
    synthesizer->setSeed(2024);
    for (auto _ : state) {
        synthesizer->setInputs(source.get(), side, side, guided ? &direction : nullptr, guided ? &scale : nullptr,
                               nullptr);
        Velmor::PDG_GridAll destination;
        Velmor::PSGBoundaryAll candidates;
        synthesizer->synthesize(&destination, &candidates, nullptr, 0);
        benchmark::DoNotOptimize(synthesizer->target->layers[0]->data);
    }
    state.SetLabel(std::string(state.range(1) ? "cutout" : "blended") + (guided ? " guided" : "")
                   + (structured ? " structured" : ""));
    state.counters["MPix/s"] = benchmark::Counter(double(side) * side * 1e-6 * double(state.iterations()),
                                                  benchmark::Counter::kIsRate);
}

void BM_PrepareMask(benchmark::State& state)
{
    static const std::unique_ptr<LayeredImage> source = makeSource(1024);
    Image mask(1024, 1024, Gray);
    for (int y = 0; y < 1024; ++y)
        for (int x = 0; x < 1024; ++x)
            mask.pixelAt(x, y)[0] = latticeNoise(x, y, 128, 9) > 0.35f ? 1.0f : 0.0f;
    source->mask = &mask;
    // finalmask.png lands in the working directory: keep it out of the way.
    QTemporaryDir dir;
    const QString previous = QDir::currentPath();
    QDir::setCurrent(dir.path());
    size_t candidates = 0;
    for (auto _ : state) {
        Velmor::PSGMasked generator;
        generator.init(*source, 100, 20);
        candidates = generator.candidates.size();
    }
    QDir::setCurrent(previous);
    source->mask = nullptr;
    state.counters["candidates"] = double(candidates);
    state.counters["MPix/s"] = benchmark::Counter(1024.0 * 1024.0 * 1e-6 * double(state.iterations()),
                                                  benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK(BM_Synthesize)
    ->ArgsProduct({{1024, 2048}, {0, 1}, {0, 1}, {0}})
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true)
    ->UseRealTime();
BENCHMARK(BM_Synthesize)
    ->ArgsProduct({{4096}, {0, 1}, {0, 1}, {0}})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true)
    ->UseRealTime();
BENCHMARK(BM_Synthesize)
    ->ArgsProduct({{1024}, {0, 1}, {0, 1}, {1}})
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true)
    ->UseRealTime();
BENCHMARK(BM_PrepareMask)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true)->UseRealTime();
