#include "Image.h"
#include "MeshData.h"
#include "UvSeamFixer.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

// Seam fixing of a surface's four generated layers (colour, normal,
// displacement, roughness) for a mesh, at the side given by the argument.
void fixLayers(benchmark::State& state, const std::vector<MeshVertex>& vertices)
{
    const uint32_t side = uint32_t(state.range(0));
    std::vector<Image> layers;
    layers.emplace_back(side, side, RGB);
    layers.emplace_back(side, side, Normal);
    layers.emplace_back(side, side, Gray);
    layers.emplace_back(side, side, Gray);
    for (Image& layer : layers)
        for (uint64_t i = 0; i < layer.floatCount(); ++i)
            layer.data[i] = 0.5f + 0.4f * std::sin(float(i % 977) * 0.1f);
    std::vector<Image*> pointers;
    for (Image& layer : layers)
        pointers.push_back(&layer);
    for (auto _ : state)
        fixUvSeams(vertices, pointers);
    state.counters["seams"] = double(findUvSeams(vertices).seams.size());
}

void BM_FixUvSeamsSphere(benchmark::State& state)
{
    static const std::vector<MeshVertex> vertices = makeSphere(32, 32).vertices;
    fixLayers(state, vertices);
}

// The sample bridge, read from the build tree's data (run from build/).
void BM_FixUvSeamsBridge(benchmark::State& state)
{
    static const std::vector<MeshVertex> vertices = importMeshFile("data/Meshes/Bridge.obj").vertices;
    if (vertices.empty()) {
        state.SkipWithError("data/Meshes/Bridge.obj not found: run from build/");
        return;
    }
    fixLayers(state, vertices);
}

} // namespace

BENCHMARK(BM_FixUvSeamsSphere)->Arg(1024)->Arg(2048)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FixUvSeamsBridge)->Arg(1024)->Arg(2048)->Unit(benchmark::kMillisecond);
