// How long a cancel takes to stop a 4096 x 4096 run of the sample project's
// surfaces: the time from requestCancel to the return of synthesizeSurface,
// for cancels arriving at several moments of the run (mask, surfaces, merge
// of the mixed surface). The window promises less than half a second.
#include "ImageSynthesizer.h"
#include "ProjectData.h"
#include "ProjectLoader.h"
#include "SurfaceSynthesis.h"
#include "SurfaceSynthesisContext.h"

#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

namespace {

void BM_CancelLatency(benchmark::State& state)
{
    using Clock = std::chrono::steady_clock;
    const char* const name = state.range(0) == 1 ? "MossyCobblestones" : "Cobblestones";
    const auto delay = std::chrono::milliseconds(state.range(1));
    std::unique_ptr<Velmor::ProjectData> project
        = Velmor::ProjectLoader(QStringLiteral(ONDRELS_SAMPLE_PROJECT_DIR)).load();
    Velmor::ProjectData::SurfaceData* surface = nullptr;
    for (const auto& candidate : project->surfaces)
        if (candidate->name == name)
            surface = candidate.get();
    if (!surface || !surface->synthesizer() || !surface->synthesisContext) {
        state.SkipWithError("the sample project lacks the surface");
        return;
    }
    surface->synthesizer()->params->targetWidth = 4096;
    surface->synthesizer()->params->targetHeight = 4096;
    Velmor::SurfaceSynthesisContext& context = *surface->synthesisContext;
    context.seed = 2024;
    // Mask preparation writes finalmask.png into the working directory.
    QTemporaryDir dir;
    const QString previous = QDir::currentPath();
    QDir::setCurrent(dir.path());
    int finishedFirst = 0;
    for (auto _ : state) {
        Clock::time_point returned;
        std::thread worker([&] {
            Velmor::synthesizeSurface(context, {});
            returned = Clock::now();
        });
        std::this_thread::sleep_for(delay);
        const Clock::time_point asked = Clock::now();
        Velmor::requestCancel(context);
        worker.join();
        if (returned < asked)
            ++finishedFirst;
        state.SetIterationTime(std::chrono::duration<double>(std::max(returned, asked) - asked).count());
    }
    QDir::setCurrent(previous);
    // Runs that ended before the cancel say nothing about its latency.
    state.counters["finished_first"] = finishedFirst;
}

double maximum(const std::vector<double>& values)
{
    return values.empty() ? 0.0 : *std::max_element(values.begin(), values.end());
}

} // namespace

// Arguments: 0 the plain surface, 1 the mixed surface; the cancel's delay in ms.
BENCHMARK(BM_CancelLatency)
    ->Args({0, 300})
    ->Args({0, 3000})
    ->Args({1, 300})
    ->Args({1, 3000})
    ->Args({1, 10000})
    ->Args({1, 40000})
    ->Iterations(1)
    ->Repetitions(3)
    ->ComputeStatistics("max", maximum)
    ->ReportAggregatesOnly(true)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
