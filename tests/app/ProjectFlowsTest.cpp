#include "ProjectFlows.h"
#include "DocumentTestSupport.h"
#include "ProjectEdits.h"
#include "ScriptedDialogs.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QUndoStack>

namespace {

struct Flows {
    ProjectDocument document;
    ScriptedDialogs dialogs;
    ProjectFlows flows {&document, &dialogs};
};

} // namespace

TEST(ProjectFlows, SaveAsksForADirectoryOnceThenSavesThereAndMarksTheProjectSaved)
{
    QTemporaryDir directory;
    Flows f;
    ProjectEdits::newSurface(f.document);
    EXPECT_TRUE(f.document.isModified());

    f.dialogs.directories = {QString()}; // cancelled: nothing written
    EXPECT_FALSE(f.flows.save());
    EXPECT_TRUE(f.document.isModified());
    EXPECT_TRUE(f.document.directory().isEmpty());

    f.dialogs.directories = {directory.path()};
    LogCapture log;
    EXPECT_TRUE(f.flows.save());
    EXPECT_TRUE(log.contains("Saving project to: " + directory.path(), Info));
    EXPECT_TRUE(QFile::exists(directory.path() + "/Surfaces/NewSurface.vms"));
    EXPECT_FALSE(f.document.isModified());
    EXPECT_EQ(f.document.directory(), directory.path());
    EXPECT_EQ(f.dialogs.chooserTitles,
              QStringList({"Select Empty Directory to Save Project", "Select Empty Directory to Save Project"}));
    EXPECT_EQ(f.dialogs.chooserStarts, QStringList({"./Projects", "./Projects"}));

    // Saved once: Save asks no more, undo past the save is modified again.
    ProjectEdits::newScaleMap(f.document);
    EXPECT_TRUE(f.flows.save());
    EXPECT_TRUE(QFile::exists(directory.path() + "/Utilities/ScaleMap.vsm"));
    f.document.undoStack()->undo();
    EXPECT_TRUE(f.document.isModified());
    f.document.undoStack()->redo();
    EXPECT_FALSE(f.document.isModified());
    EXPECT_TRUE(f.dialogs.scriptUsedUp());
}

TEST(ProjectFlows, NewAndLoadAskToSaveFirstAndCancelKeepsTheProject)
{
    QTemporaryDir directory;
    Flows f;
    ProjectEdits::newDirectionMap(f.document);
    Velmor::ProjectData* before = &f.document.store();

    // Cancel on the question, then Cancel on the load chooser: untouched.
    f.dialogs.answers = {Dialogs::Cancel, Dialogs::No};
    f.dialogs.directories = {QString()};
    f.flows.newProject();
    f.flows.loadProject();
    EXPECT_FALSE(f.dialogs.waitShown);
    EXPECT_EQ(&f.document.store(), before);
    EXPECT_EQ(f.document.store().directionMaps.size(), 1u);
    EXPECT_TRUE(f.document.isModified());
    EXPECT_EQ(f.dialogs.chooserTitles, QStringList({"Load Project Directory"}));

    // Yes saves first (asking where), then the new project is empty and untitled.
    f.dialogs.answers = {Dialogs::Yes};
    f.dialogs.directories = {directory.path()};
    f.flows.newProject();
    EXPECT_TRUE(QFile::exists(directory.path() + "/Utilities/DirMap.vdm"));
    EXPECT_TRUE(f.document.store().directionMaps.empty());
    EXPECT_TRUE(f.document.directory().isEmpty());
    EXPECT_EQ(f.document.displayName(), "Untitled Project");
    EXPECT_FALSE(f.document.isModified());
    EXPECT_EQ(f.document.undoStack()->count(), 0);

    // Load: the wait note shows, the load runs one second later.
    f.dialogs.answers = {Dialogs::No};
    f.dialogs.directories = {directory.path()};
    QSignalSpy loaded(&f.flows, &ProjectFlows::projectLoaded);
    f.flows.loadProject();
    EXPECT_TRUE(f.dialogs.waitShown);
    EXPECT_TRUE(f.document.store().directionMaps.empty());
    ASSERT_TRUE(loaded.wait(3000));
    EXPECT_FALSE(f.dialogs.waitShown);
    EXPECT_EQ(f.document.store().directionMaps.size(), 1u);
    EXPECT_EQ(f.document.directory(), directory.path());
    EXPECT_EQ(f.dialogs.questions,
              QStringList({"Save current project?", "Save current project?", "Save current project?",
                           "Save current project?"}));
    EXPECT_TRUE(f.dialogs.scriptUsedUp());
}

TEST(ProjectFlows, QuitAsksAndOnlyQuitsWhenNothingIsCancelled)
{
    QTemporaryDir directory;
    Flows f;
    f.dialogs.answers = {Dialogs::Cancel, Dialogs::No, Dialogs::Yes, Dialogs::Yes};
    f.dialogs.directories = {QString(), directory.path()};
    EXPECT_FALSE(f.flows.quit()); // Cancel keeps running
    EXPECT_TRUE(f.flows.quit()); // No quits
    EXPECT_FALSE(f.flows.quit()); // Yes, but the save chooser was cancelled
    EXPECT_TRUE(f.flows.quit()); // Yes and saved
    EXPECT_TRUE(QFile::exists(directory.path() + "/Cache/Mask.cache"));
    EXPECT_EQ(f.dialogs.questions.count("Save project before quit?"), 4);
}

TEST(ProjectFlows, ImportsUseTheirChoosersAndRememberTheFolder)
{
    QTemporaryDir files;
    Flows f;
    f.dialogs.files
        = {{writePng(files.path(), "a.png"), writePng(files.path(), "b.png")}, {}, {files.path() + "/m.obj"}};
    f.flows.importImages();
    f.flows.importImages(); // cancelled
    f.flows.importModels();
    EXPECT_EQ(f.dialogs.chooserTitles, QStringList({"Load Image", "Load Image", "Import Model"}));
    EXPECT_EQ(f.dialogs.chooserStarts, QStringList({"./Projects", files.path(), files.path()}));
    EXPECT_EQ(f.document.store().textures.size(), 2u);
    EXPECT_EQ(f.document.store().models.size(), 1u);
    EXPECT_EQ(f.document.undoStack()->count(), 2);
}
