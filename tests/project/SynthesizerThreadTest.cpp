#include "ProjectTestSupport.h"
#include "SurfaceSynthesis.h"
#include "SynthesisTestSupport.h"
#include "SynthesizerThread.h"

#include <QCoreApplication>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace Velmor;

namespace {

struct ThreadFixture
{
    ThreadFixture(uint32_t size)
    {
        surface = store.addSurface("Bark");
        surface->addLayer() = {"Color", addImageTexture(store, "bark", patternImage(32, 32, RGB)),
                               ProjectData::LayerMode::Color};
        smallPatches(*surface, size, size);
        surface->synthesisContext->seed = 11;
    }

    ProjectData store;
    ProjectData::SurfaceData* surface = nullptr;
};

std::vector<int> values(const QSignalSpy& spy)
{
    std::vector<int> result;
    for (const QList<QVariant>& arguments : spy)
        result.push_back(arguments.at(0).toInt());
    return result;
}

} // namespace

TEST(SynthesizerThread, ReportsRisingProgressAndFinishesOnce)
{
    ThreadFixture f(64);
    SynthesizerThread thread(f.surface);
    QSignalSpy progress(&thread, &SynthesizerThread::onProgress);
    QSignalSpy finished(&thread, &SynthesizerThread::onFinish);
    thread.start(QThread::InheritPriority);
    // The spies record in the worker thread, so once run() has returned they
    // hold everything it emitted (a spy's wait() could miss a quick finish).
    ASSERT_TRUE(thread.wait(60000));
    QCoreApplication::processEvents();
    EXPECT_EQ(finished.count(), 1);

    const std::vector<int> reported = values(progress);
    ASSERT_GE(reported.size(), 5u);
    for (size_t i = 1; i < reported.size(); ++i)
        EXPECT_GT(reported[i], reported[i - 1]);
    EXPECT_GE(reported.back(), 90);
    ASSERT_NE(f.surface->synthesizer()->target, nullptr);
    EXPECT_EQ(f.surface->synthesizer()->target->layers[0]->width, 64u);
}

TEST(SynthesizerThread, CancelStopsTheRunAndStillFinishesOnce)
{
    // Large enough that the run cannot end before the cancel lands: every
    // position tries many candidates against an unreachable threshold.
    ThreadFixture f(512);
    for (const auto& synthesizer : f.surface->synthesizers) {
        auto* params = static_cast<ImageSynthesizer::PatchSynthesizerParams*>(synthesizer->params);
        params->errorThreshold = 0.0f;
        params->maxTries = 50;
    }
    SynthesizerThread thread(f.surface);
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
    EXPECT_GE(progressSeen, 1);
    EXPECT_TRUE(f.surface->synthesisContext->cancelRequested.load());
    EXPECT_EQ(f.surface->synthesisContext->currentSynthesizer.load(), nullptr);
    // The pass ended early: 65 x 65 positions cover the whole target.
    const std::vector<int> totals = passPatchTotals(log);
    ASSERT_EQ(totals.size(), 1u);
    EXPECT_LT(totals[0], 65 * 65);

}

TEST(SynthesizerThread, CancelBeforeTheStartIsNotLost)
{
    ThreadFixture f(64);
    SynthesizerThread thread(f.surface);
    QSignalSpy finished(&thread, &SynthesizerThread::onFinish);
    LogCapture log;
    thread.cancel();
    thread.start();
    ASSERT_TRUE(thread.wait(60000));
    EXPECT_EQ(finished.count(), 1);
    EXPECT_EQ(log.count(Info, "Synthesizer started"), 0);
    EXPECT_EQ(f.surface->synthesizer()->target, nullptr);
}

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
