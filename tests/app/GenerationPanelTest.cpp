#include "GenerationController.h"
#include "GenerationPanel.h"
#include "GenerationTestSupport.h"
#include "ProgressThrottle.h"
#include "ScriptedDialogs.h"
#include "SynthesizerPanel.h"

#include <gtest/gtest.h>

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QUndoStack>

namespace {

class GenerationPanelTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ProgressThrottle::reset();
        panel.show();
    }

    void startFromTheButton(uint32_t size)
    {
        scene = std::make_unique<GenerationScene>(document, files.path(), size);
        panel.setSurface(scene->surface);
        ASSERT_TRUE(panel.generateButton()->isEnabled());
        QTest::mouseClick(panel.generateButton(), Qt::LeftButton);
        ASSERT_TRUE(controller.isRunning());
    }

    QTemporaryDir files;
    ProjectDocument document;
    ScriptedDialogs dialogs;
    GenerationController controller{&document};
    GenerationPanel panel{&document, &dialogs, &controller};
    std::unique_ptr<GenerationScene> scene;
};

// Generate disables everything the run reads and both saves; the end shows
// 100 and gives the buttons back; the saved files are named per layer.
TEST_F(GenerationPanelTest, GenerateRunsToOneHundredAndThenSaves)
{
    QSignalSpy finished(&controller, &GenerationController::finished);
    startFromTheButton(64);
    EXPECT_FALSE(panel.generateButton()->isEnabled());
    EXPECT_TRUE(panel.cancelButton()->isEnabled());
    EXPECT_FALSE(panel.saveButton()->isEnabled());
    EXPECT_FALSE(panel.saveAndLoadButton()->isEnabled());
    EXPECT_FALSE(panel.clearOutputButton()->isEnabled());
    EXPECT_FALSE(panel.synthesizerPanel()->isEnabled());
    // Every field, choice and button but Cancel.
    for (QWidget* control : panel.findChildren<QWidget*>()) {
        if ((qobject_cast<QAbstractSpinBox*>(control) || qobject_cast<QComboBox*>(control)
             || qobject_cast<QAbstractButton*>(control))
            && control != panel.cancelButton()) {
            EXPECT_FALSE(control->isEnabled()) << control->metaObject()->className() << " "
                                               << control->property("text").toString().toStdString();
        }
    }

    ASSERT_TRUE(finished.wait(60000));
    EXPECT_EQ(panel.progressBar()->value(), 100);
    EXPECT_TRUE(panel.generateButton()->isEnabled());
    EXPECT_FALSE(panel.cancelButton()->isEnabled());
    EXPECT_TRUE(panel.saveButton()->isEnabled());
    EXPECT_TRUE(panel.clearOutputButton()->isEnabled());
    EXPECT_TRUE(panel.timeLabel()->text().contains("elapsed"));

    QDir output(files.path());
    ASSERT_TRUE(output.mkpath("out") && output.cd("out"));
    dialogs.directories = {output.path()};
    QSignalSpy created(&panel, &GenerationPanel::surfaceCreated);
    auto* saveAndLoad = panel.findChild<QPushButton*>("SaveGeneratedImageLoadSurface");
    ASSERT_NE(saveAndLoad, nullptr);
    QTest::mouseClick(saveAndLoad, Qt::LeftButton);
    EXPECT_EQ(output.entryList(QDir::Files, QDir::Name), QStringList({"Color.jpg", "Normal.png"}));
    ASSERT_EQ(created.count(), 1);
    EXPECT_EQ(created.first().at(0).value<RecordRef>().surface()->layers.size(), 2u);
}

// Cancel stops a large run: Cancel greys out at once, Generate returns when
// the thread has stopped, and the bar stays short of 100.
TEST_F(GenerationPanelTest, CancelMidRun)
{
    QSignalSpy progress(&controller, &GenerationController::progressChanged);
    QSignalSpy finished(&controller, &GenerationController::finished);
    int64_t now = 0;
    controller.setClock([&now] { return now += 1000; });
    startFromTheButton(2048);
    while (panel.progressBar()->value() == 0)
        ASSERT_TRUE(progress.wait(30000));
    QTest::mouseClick(panel.cancelButton(), Qt::LeftButton);
    EXPECT_FALSE(panel.cancelButton()->isEnabled());
    EXPECT_FALSE(panel.generateButton()->isEnabled());

    ASSERT_TRUE(!finished.isEmpty() || finished.wait(30000));
    EXPECT_TRUE(finished.first().at(1).toBool());
    EXPECT_TRUE(panel.generateButton()->isEnabled());
    EXPECT_LT(panel.progressBar()->value(), 100);
    EXPECT_GT(panel.progressBar()->value(), 0);
}

} // namespace

namespace {

// The source search is a field of the synthesizer like the others: one undo
// step each way, and the choice follows the record.
TEST_F(GenerationPanelTest, SourceSearchChoiceIsAnUndoableField)
{
    scene = std::make_unique<GenerationScene>(document, files.path(), 32);
    panel.setSurface(scene->surface);
    auto* choice = panel.findChild<QComboBox*>("SourceSearch");
    ASSERT_NE(choice, nullptr);
    auto* params = dynamic_cast<Velmor::ImageSynthesizer::PatchSynthesizerParams*>(
        scene->surface->synthesizer()->params);
    ASSERT_NE(params, nullptr);
    EXPECT_EQ(choice->currentIndex(), 0);
    QTest::keyClick(choice, Qt::Key_Down); // activates "Structured"
    EXPECT_EQ(params->sourceSearch, Velmor::SourceSearch::Structured);
    // The properties dock refreshes its panels on every record change.
    document.undoStack()->undo();
    panel.refresh();
    EXPECT_EQ(params->sourceSearch, Velmor::SourceSearch::Random);
    EXPECT_EQ(choice->currentIndex(), 0);
    document.undoStack()->redo();
    panel.refresh();
    EXPECT_EQ(choice->currentIndex(), 1);
}

} // namespace
