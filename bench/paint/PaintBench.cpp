// Painting speed: one whole stroke (press, 64 moves across the map, release
// with its undo step) of each brush on square direction and scale maps of
// 1024, 2048 and 4096 pixels, with a radius of 2 % of the image width; and a
// whole-map fill. Run ondrels-paint-bench --benchmark_repetitions=5 and read
// the medians: the time from press to release is what a user waits for in
// total, spread over the stroke.
#include "PaintTool.h"
#include "PaintToolBox.h"
#include "ProjectDocument.h"

#include <QUndoStack>
#include <benchmark/benchmark.h>

namespace {

struct PaintSetup
{
    explicit PaintSetup(uint32_t side)
    {
        Velmor::ProjectData& store = document.store();
        surface = store.addSurface("Bench");
        surface->directionMap = store.addDirectionMap();
        surface->scaleMap = store.addScaleMap();
        surface->directionMap->image.resample(side, side);
        surface->scaleMap->image.resample(side, side);
        tools.setSurface(surface);
        tools.setRadius(0.02);
        tools.setScaleValue(0.5);
    }

    // A diagonal stroke in 64 pointer moves, as a quick drag gives them.
    void stroke(PaintTool* tool)
    {
        tool->press({0.1, 0.1});
        for (int i = 1; i <= 64; ++i)
            tool->move({0.1 + 0.8 * i / 64.0, 0.1 + 0.6 * i / 64.0});
        tool->release();
    }

    ProjectDocument document;
    PaintToolBox tools{&document};
    Velmor::ProjectData::SurfaceData* surface = nullptr;
};

void strokeWith(benchmark::State& state, PaintToolBox::Tool tool, PaintMap map)
{
    PaintSetup setup(uint32_t(state.range(0)));
    setup.tools.setTargetMap(map);
    setup.tools.setActiveTool(tool);
    for (auto _ : state) {
        setup.stroke(setup.tools.currentTool());
        // Every stroke paints the same map afresh, and the history stays short.
        state.PauseTiming();
        setup.document.undoStack()->undo();
        setup.document.undoStack()->clear();
        state.ResumeTiming();
    }
}

void DirectionStroke(benchmark::State& state)
{
    strokeWith(state, PaintToolBox::Direction, PaintMap::Direction);
}

void ScaleStroke(benchmark::State& state)
{
    strokeWith(state, PaintToolBox::Scale, PaintMap::Scale);
}

void SmoothDirectionStroke(benchmark::State& state)
{
    strokeWith(state, PaintToolBox::Smooth, PaintMap::Direction);
}

void WholeDirectionFill(benchmark::State& state)
{
    PaintSetup setup(uint32_t(state.range(0)));
    setup.tools.setActiveTool(PaintToolBox::Fill);
    double degrees = 0.0;
    for (auto _ : state) {
        // Another direction each time, so that every fill changes the map.
        setup.tools.setDirectionDegrees(degrees += 10.0);
        setup.tools.currentTool()->press({0.5, 0.5});
        setup.tools.currentTool()->release();
        state.PauseTiming();
        setup.document.undoStack()->clear();
        state.ResumeTiming();
    }
}

} // namespace

BENCHMARK(DirectionStroke)->Arg(1024)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond);
BENCHMARK(ScaleStroke)->Arg(1024)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond);
BENCHMARK(SmoothDirectionStroke)->Arg(1024)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond);
BENCHMARK(WholeDirectionFill)->Arg(1024)->Arg(4096)->Unit(benchmark::kMillisecond);
