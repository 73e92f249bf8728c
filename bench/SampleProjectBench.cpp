// The sample project's mixed surface (mask, both surfaces and the merge) at
// 2048 x 2048 with a fixed seed: the time a user waits for the whole
// "MossyCobblestones" result.
#include "LogMessage.h"
#include "ProjectData.h"
#include "ProjectLoader.h"
#include "SurfaceSynthesis.h"
#include "SurfaceSynthesisContext.h"

#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <memory>

namespace {

void BM_SampleMixedSurface(benchmark::State& state)
{
    const int side = int(state.range(0));
    std::unique_ptr<Velmor::ProjectData> project
        = Velmor::ProjectLoader(QStringLiteral(ONDRELS_SAMPLE_PROJECT_DIR)).load();
    Velmor::ProjectData::SurfaceData* mixed = nullptr;
    for (const auto& surface : project->surfaces)
        if (surface->name == "MossyCobblestones")
            mixed = surface.get();
    if (!mixed || !mixed->synthesizer() || !mixed->synthesisContext) {
        state.SkipWithError("the sample project has no MossyCobblestones mixed surface");
        return;
    }
    mixed->synthesizer()->params->targetWidth = uint32_t(side);
    mixed->synthesizer()->params->targetHeight = uint32_t(side);
    Velmor::SurfaceSynthesisContext& context = *mixed->synthesisContext;
    context.seed = 2024;
    // Mask preparation writes finalmask.png into the working directory.
    QTemporaryDir dir;
    const QString previous = QDir::currentPath();
    QDir::setCurrent(dir.path());
    bool complete = true;
    for (auto _ : state)
        complete = Velmor::synthesizeSurface(context, {}) && complete;
    QDir::setCurrent(previous);
    if (!complete)
        state.SkipWithError("the mixed surface synthesis did not complete");
    state.counters["MPix/s"] = benchmark::Counter(double(side) * side * 1e-6 * double(state.iterations()),
                                                  benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK(BM_SampleMixedSurface)
    ->Arg(2048)
    ->Iterations(1)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
