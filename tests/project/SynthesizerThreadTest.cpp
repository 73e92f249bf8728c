#include "ProjectTestSupport.h"
#include "SurfaceSynthesis.h"
#include "SynthesizerThread.h"

#include <QCoreApplication>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace Velmor;

namespace {

// A one-layer surface synthesized to size x size with small patches.
ProjectData::SurfaceData* barkSurface(ProjectData& store, uint32_t size)
{
    ProjectData::SurfaceData* surface = store.addSurface("Bark");
    surface->addLayer() = {"Color", addImageTexture(store, "bark", patternImage(32, 32, RGB)),
                           ProjectData::LayerMode::Color};
    smallPatches(*surface, size, size);
    return surface;
}

} // namespace

TEST(SynthesizerThread, ReportsRisingProgressAndFinishesOnce)
{
    ProjectData store;
    ProjectData::SurfaceData* surface = barkSurface(store, 64);
    SynthesizerThread thread(surface);
    QSignalSpy progress(&thread, &SynthesizerThread::onProgress);
    QSignalSpy finished(&thread, &SynthesizerThread::onFinish);
    thread.start(QThread::InheritPriority);
    // Spies record in the worker thread: after wait() they hold all it emitted.
    ASSERT_TRUE(thread.wait(60000));
    QCoreApplication::processEvents();
    EXPECT_EQ(finished.count(), 1);
    std::vector<int> reported;
    for (const QList<QVariant>& arguments : progress)
        reported.push_back(arguments.at(0).toInt());
    EXPECT_TRUE(strictlyRising(reported));
    EXPECT_GE(reported.back(), 90);
    EXPECT_NE(surface->synthesizer()->target, nullptr);
}

TEST(SynthesizerThread, CancelStopsTheRunAndStillFinishesOnce)
{
    // Slow enough (unreachable threshold, many tries) that the cancel lands first.
    ProjectData store;
    ProjectData::SurfaceData* surface = barkSurface(store, 512);
    for (const auto& synthesizer : surface->synthesizers) {
        auto* params = static_cast<ImageSynthesizer::PatchSynthesizerParams*>(synthesizer->params);
        params->errorThreshold = 0.0f;
        params->maxTries = 50;
    }
    SynthesizerThread thread(surface);
    QSignalSpy finished(&thread, &SynthesizerThread::onFinish);
    // Cancel from the GUI thread as soon as the first progress arrives there.
    int progressSeen = 0;
    QObject::connect(&thread, &SynthesizerThread::onProgress, &thread, [&](int) {
        if (progressSeen++ == 0)
            thread.cancel();
    }, Qt::QueuedConnection);
    LogCapture log;
    thread.start();
    ASSERT_TRUE(finished.wait(120000));
    ASSERT_TRUE(thread.wait(10000));
    QCoreApplication::processEvents();
    EXPECT_EQ(finished.count(), 1);
    // The pass ended early: 65 x 65 positions cover the whole target.
    const std::vector<int> totals = passPatchTotals(log);
    ASSERT_EQ(totals.size(), 1u);
    EXPECT_LT(totals[0], 65 * 65);
}

TEST(SynthesizerThread, CancelBeforeTheStartIsNotLost)
{
    ProjectData store;
    ProjectData::SurfaceData* surface = barkSurface(store, 64);
    SynthesizerThread thread(surface);
    QSignalSpy finished(&thread, &SynthesizerThread::onFinish);
    LogCapture log;
    thread.cancel();
    thread.start();
    ASSERT_TRUE(thread.wait(60000));
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(log.count(Info, "Synthesizer started"), 0);
    EXPECT_EQ(surface->synthesizer()->target, nullptr);
}

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
