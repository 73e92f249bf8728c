#include "GenerationController.h"
#include "GenerationTestSupport.h"
#include "ProgressThrottle.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

namespace {

using SurfaceData = Velmor::ProjectData::SurfaceData;

class GenerationControllerTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ProgressThrottle::reset();
        controller.setClock([this] { return now; });
    }

    // Waits for the end of the run; false when none came in time.
    bool waitForEnd(QSignalSpy& finished)
    {
        return !finished.isEmpty() || finished.wait(60000);
    }

    QTemporaryDir files;
    ProjectDocument document;
    GenerationController controller{&document};
    int64_t now = 0;
};

TEST(ProgressThrottle, DropsValuesWithinHalfASecondOfTheLastShownOne)
{
    ProgressThrottle::reset();
    // The first value only sets the stamp.
    EXPECT_FALSE(ProgressThrottle::accept(1000));
    EXPECT_FALSE(ProgressThrottle::accept(1499));
    EXPECT_TRUE(ProgressThrottle::accept(1500));
    EXPECT_FALSE(ProgressThrottle::accept(1999));
    EXPECT_TRUE(ProgressThrottle::accept(2000));
}

// The bar shows 10, 20, 30 arriving 100 ms apart as nothing, a value 600 ms
// later, and 100 at the end whatever came last; the time left follows the
// latest value.
TEST_F(GenerationControllerTest, ThrottlesProgressAndEndsAtOneHundred)
{
    GenerationScene scene(document, files.path(), 48);
    QSignalSpy progress(&controller, &GenerationController::progressChanged);
    QSignalSpy redraws(&controller, &GenerationController::needRedraw);
    QSignalSpy outputs(&controller, &GenerationController::outputChanged);
    QSignalSpy finished(&controller, &GenerationController::finished);
    ASSERT_TRUE(controller.start(scene.surface));
    ASSERT_EQ(progress.count(), 1);
    EXPECT_EQ(outputs.count(), 1);
    EXPECT_EQ(progress.takeFirst().at(0).toInt(), 0);

    // The thread's own values wait in the event queue; these come first.
    for (int value : {10, 20, 30}) {
        controller.onGenerationProgress(value);
        now += 100;
    }
    EXPECT_TRUE(progress.isEmpty());
    EXPECT_TRUE(redraws.isEmpty());
    EXPECT_EQ(controller.shownProgress(), 0);

    now += 500; // 600 ms after the last one, 800 ms after the first
    controller.onGenerationProgress(40);
    ASSERT_EQ(progress.count(), 1);
    EXPECT_EQ(progress.takeFirst().at(0).toInt(), 40);
    EXPECT_EQ(redraws.count(), 1);
    EXPECT_EQ(outputs.count(), 2);
    EXPECT_EQ(controller.elapsedMs(), 800);
    EXPECT_EQ(controller.remainingMs(), 1200);

    // The clock stands still: every value of the real run is dropped.
    ASSERT_TRUE(waitForEnd(finished));
    EXPECT_FALSE(finished.first().at(1).toBool());
    EXPECT_EQ(progress.count(), 1);
    EXPECT_EQ(progress.last().at(0).toInt(), 100);
    EXPECT_EQ(controller.shownProgress(), 100);
    EXPECT_EQ(redraws.count(), 2);
}

// A real run reads the store under a read-only document, leaves a readable
// output of the requested size, and the next run may start.
TEST_F(GenerationControllerTest, RunFinishesWithOutputAndGivesTheDocumentBack)
{
    GenerationScene scene(document, files.path(), 40);
    QSignalSpy finished(&controller, &GenerationController::finished);
    QSignalSpy outputs(&controller, &GenerationController::outputChanged);
    ASSERT_TRUE(controller.start(scene.surface));
    EXPECT_TRUE(document.isReadOnly());
    EXPECT_TRUE(controller.isRunning());
    // One run at a time.
    EXPECT_FALSE(controller.start(scene.surface));

    ASSERT_TRUE(waitForEnd(finished));
    EXPECT_FALSE(document.isReadOnly());
    EXPECT_FALSE(controller.isRunning());
    EXPECT_EQ(finished.first().at(0).value<SurfaceData*>(), scene.surface);
    EXPECT_FALSE(outputs.isEmpty());
    EXPECT_EQ(outputs.last().at(0).value<SurfaceData*>(), scene.surface);

    const Velmor::ImageSynthesizer* synthesizer = scene.surface->synthesizer();
    ASSERT_NE(synthesizer->target, nullptr);
    EXPECT_TRUE(synthesizer->targetReady);
    ASSERT_EQ(synthesizer->target->layerCount(), 2u);
    EXPECT_EQ(synthesizer->target->layers[0]->width, 40u);
    EXPECT_EQ(synthesizer->target->layers[1]->format, Normal);
    // Something was pasted: the output is not the zeros it started as.
    float sum = 0.0f;
    for (uint64_t i = 0; i < synthesizer->target->layers[0]->floatCount(); ++i)
        sum += synthesizer->target->layers[0]->data[i];
    EXPECT_GT(sum, 0.0f);

    EXPECT_TRUE(controller.start(scene.surface));
    finished.clear();
    ASSERT_TRUE(waitForEnd(finished));
}

// A cancel stops a large run early: the bar stays where it was, the document
// stays read-only until the thread has stopped, and a new run starts afresh.
TEST_F(GenerationControllerTest, CancelStopsTheRunAndTheNextRunCompletes)
{
    GenerationScene scene(document, files.path(), 2048);
    QSignalSpy progress(&controller, &GenerationController::progressChanged);
    QSignalSpy finished(&controller, &GenerationController::finished);
    // Every value is shown, so that the cancel comes after real progress.
    controller.setClock([this] { return now += 1000; });
    ASSERT_TRUE(controller.start(scene.surface));
    ASSERT_TRUE(progress.wait(30000));
    while (progress.last().at(0).toInt() == 0)
        ASSERT_TRUE(progress.wait(30000));
    controller.cancel();
    EXPECT_TRUE(controller.isCancelling());
    EXPECT_TRUE(document.isReadOnly());
    const int shownAtCancel = controller.shownProgress();

    ASSERT_TRUE(waitForEnd(finished));
    EXPECT_TRUE(finished.first().at(1).toBool());
    EXPECT_FALSE(document.isReadOnly());
    EXPECT_FALSE(controller.isRunning());
    EXPECT_EQ(controller.shownProgress(), shownAtCancel);
    EXPECT_LT(controller.shownProgress(), 100);

    // The cancel of the old run does not reach the new one.
    auto* params = scene.surface->synthesizer()->params;
    params->targetWidth = params->targetHeight = 40;
    finished.clear();
    ASSERT_TRUE(controller.start(scene.surface));
    ASSERT_TRUE(waitForEnd(finished));
    EXPECT_FALSE(finished.first().at(1).toBool());
    EXPECT_EQ(controller.shownProgress(), 100);
}

// The 3D preview re-uploads the whole output on every refresh: a 2048 x 2048
// output refreshes it every 8 s, though the bar moves every 500 ms.
TEST_F(GenerationControllerTest, PreviewFollowsLargeOutputsLessOften)
{
    GenerationScene scene(document, files.path(), 2048);
    QSignalSpy progress(&controller, &GenerationController::progressChanged);
    QSignalSpy outputs(&controller, &GenerationController::outputChanged);
    QSignalSpy finished(&controller, &GenerationController::finished);
    ASSERT_TRUE(controller.start(scene.surface));
    controller.onGenerationProgress(1);
    for (int value = 2; value <= 16; ++value) {
        now += 500;
        controller.onGenerationProgress(value);
    }
    EXPECT_EQ(progress.count(), 16); // 0, then 2 to 16
    EXPECT_EQ(outputs.count(), 1);   // the start only: 7500 ms have passed
    now += 500;
    controller.onGenerationProgress(17);
    EXPECT_EQ(outputs.count(), 2);
    controller.cancel();
    ASSERT_TRUE(waitForEnd(finished));
    EXPECT_EQ(outputs.count(), 3); // the end
}

// Replacing the project while a run reads it stops the run first.
TEST_F(GenerationControllerTest, ReplacingTheProjectStopsTheRun)
{
    GenerationScene scene(document, files.path(), 2048);
    QSignalSpy finished(&controller, &GenerationController::finished);
    ASSERT_TRUE(controller.start(scene.surface));
    document.replaceProject(std::make_unique<Velmor::ProjectData>(), QString());
    EXPECT_FALSE(controller.isRunning());
    EXPECT_FALSE(document.isReadOnly());
    ASSERT_EQ(finished.count(), 1);
    EXPECT_TRUE(finished.first().at(1).toBool());
}

} // namespace
