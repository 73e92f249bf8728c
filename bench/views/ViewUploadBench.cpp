// How long the generated view takes to show a new state of the output: the
// upload of one layer (conversion included) and the paint, at the sizes users
// generate. A run refreshes the view every 500 ms, so this bounds how much of
// that time the GUI thread is busy. Needs a display: run it under xvfb-run.
#include "Image.h"
#include "Preview2DExtended.h"

#include <QApplication>
#include <QSurfaceFormat>
#include <benchmark/benchmark.h>

#include <cmath>

namespace {

Image outputLike(uint32_t side, PixelFormat format)
{
    Image image(side, side, format);
    for (uint64_t i = 0; i < image.floatCount(); ++i)
        image.data[i] = 0.5f + 0.4f * std::sin(0.001f * float(i));
    if (format == Normal)
        image.mappedNormalXY = image.mappedNormalZ = true;
    return image;
}

Preview2DExtended& view()
{
    static Preview2DExtended* shown = [] {
        auto* v = new Preview2DExtended;
        v->resize(800, 800);
        v->show();
        v->grabFramebuffer(); // creates the context
        return v;
    }();
    return *shown;
}

void refreshBench(benchmark::State& state, PixelFormat format, bool normalise)
{
    const Image image = outputLike(uint32_t(state.range(0)), format);
    Preview2DExtended& v = view();
    v.setNormalise(normalise);
    for (auto _ : state) {
        v.setImage(&image);
        benchmark::DoNotOptimize(v.grabFramebuffer().constBits());
    }
    v.setImage(nullptr);
}

} // namespace

BENCHMARK_CAPTURE(refreshBench, rgb, RGB, false)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond)
    ->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK_CAPTURE(refreshBench, normal, Normal, false)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond)
    ->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK_CAPTURE(refreshBench, rgbNormalised, RGB, true)->Arg(2048)->Arg(4096)->Unit(benchmark::kMillisecond)
    ->Repetitions(5)->ReportAggregatesOnly(true);

int main(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_UseDesktopOpenGL, true);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, true);
    QSurfaceFormat format;
    format.setVersion(2, 1);
    format.setSwapInterval(0);
    QSurfaceFormat::setDefaultFormat(format);
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
