#include "DocumentTestSupport.h"
#include "LayerList.h"
#include "MainWindow.h"
#include "ProjectBrowserDock.h"
#include "ProjectDocument.h"
#include "ProjectFlows.h"
#include "ProjectModel.h"
#include "PropertiesDock.h"
#include "ScriptedDialogs.h"
#include "SurfacePanel.h"
#include "SynthesizerPanel.h"
#include "CentralArea.h"
#include "Preview3D.h"
#include "PreviewArea.h"
#include "PreviewPanel.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>
#include <QLineEdit>
#include <QListWidget>
#include <QSignalSpy>
#include <QSpinBox>
#include <QWheelEvent>
#include <QTest>
#include <QTreeView>
#include <QUndoStack>

namespace {

void trigger(const QString& text)
{
    for (QAction* action : MainWindow::instance()->findChildren<QAction*>())
        if (action->text() == text) {
            action->trigger();
            return;
        }
    ADD_FAILURE() << "no action " << text.toStdString();
}

// What the browser and the surface panel show, as text.
QStringList shownProject()
{
    MainWindow* window = MainWindow::instance();
    const ProjectModel* model = window->browserDock()->projectModel();
    QStringList lines;
    for (int g = 0; g < ProjectModel::GroupCount; ++g) {
        const QModelIndex group = model->groupIndex(ProjectModel::Group(g));
        for (int row = 0; row < model->rowCount(group); ++row)
            lines << group.data().toString() + ": " + model->index(row, 0, group).data().toString();
    }
    // A load lists records in file-name order, not in the order they were made.
    lines.sort();
    const QListWidget* layers = window->propertiesDock()->surfacePanel()->layerList()->list();
    for (int row = 0; row < layers->count(); ++row)
        lines << "layer: " + layers->item(row)->text();
    return lines;
}

void selectFirstSurface()
{
    ProjectBrowserDock* browser = MainWindow::instance()->browserDock();
    const QModelIndex surfaces = browser->projectModel()->groupIndex(ProjectModel::SurfacesGroup);
    browser->view()->setCurrentIndex(browser->projectModel()->index(0, 0, surfaces));
}

} // namespace

// A whole session through the real widgets: build a surface, edit it, save,
// start over and load it back.
TEST(MainWindow, BuildSaveAndReloadAProjectThroughTheWidgets)
{
    QTemporaryDir files, projectDir;
    MainWindow* window = MainWindow::instance();
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    window->activateWindow();
    ScriptedDialogs dialogs;
    window->setDialogs(&dialogs);

    dialogs.answers = {Dialogs::No};
    trigger("New Project");
    EXPECT_EQ(window->windowTitle(), "Ondrels - Untitled Project[*]");

    dialogs.files = {{writePng(files.path(), "brick_normal.png"), writePng(files.path(), "brick_color.png")}};
    trigger("Import PBR Images...");
    EXPECT_TRUE(window->isWindowModified());
    selectFirstSurface();
    LayerList* layers = window->propertiesDock()->surfacePanel()->layerList();
    ASSERT_EQ(layers->list()->count(), 2);
    EXPECT_TRUE(layers->list()->item(0)->text().startsWith("color"));

    // The normal layer becomes displacement: one step down the mode list.
    layers->list()->setCurrentRow(1);
    QTest::keyClick(layers->modeChoice(), Qt::Key_Down);
    EXPECT_EQ(window->document()->store().surfaces[0]->layers[1].mode, Velmor::ProjectData::LayerMode::Displacement);

    // A wheel over a field that has no focus leaves its value alone.
    auto* patchSize = window->propertiesDock()->synthesizerPanel()->findChild<QSpinBox*>();
    ASSERT_NE(patchSize, nullptr);
    const int stepsBefore = window->document()->undoStack()->count();
    const int sizeBefore = patchSize->value();
    const QPoint centre = patchSize->rect().center();
    QWheelEvent wheel(centre, patchSize->mapToGlobal(centre), QPoint(), QPoint(0, -120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(patchSize, &wheel);
    EXPECT_EQ(patchSize->value(), sizeBefore);
    EXPECT_EQ(window->document()->undoStack()->count(), stepsBefore);

    // F2 renames in place.
    QTreeView* tree = window->browserDock()->view();
    selectFirstSurface();
    tree->setFocus();
    QTest::keyClick(tree, Qt::Key_F2);
    auto* editor = tree->viewport()->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, "Bricks");
    QTest::keyClick(editor, Qt::Key_Return);
    // The delegate commits from the event loop.
    EXPECT_TRUE(QTest::qWaitFor([&] { return window->document()->store().surfaces[0]->name == "Bricks"; }));
    EXPECT_EQ(window->document()->undoStack()->undoText(), "Rename Surface");

    dialogs.directories = {projectDir.path()};
    trigger("Save Project");
    EXPECT_FALSE(window->isWindowModified());
    EXPECT_EQ(window->windowTitle(), "Ondrels - " + projectDir.path() + "[*]");
    selectFirstSurface();
    const QStringList saved = shownProject();
    EXPECT_TRUE(saved.contains("layer: normal  (displacement, brick_normal)")) << saved.join('|').toStdString();

    dialogs.answers = {Dialogs::No};
    trigger("New Project");
    EXPECT_EQ(window->document()->store().surfaces.size(), 0u);

    dialogs.answers = {Dialogs::No};
    dialogs.directories = {projectDir.path()};
    QSignalSpy loaded(window->flows(), &ProjectFlows::projectLoaded);
    trigger("Load Project...");
    ASSERT_TRUE(loaded.wait(5000));
    selectFirstSurface();
    EXPECT_EQ(shownProject(), saved);
    EXPECT_EQ(window->windowTitle(), "Ondrels - " + projectDir.path() + "[*]");

    // Closing by the frame asks; Cancel keeps the window.
    dialogs.answers = {Dialogs::Cancel};
    EXPECT_FALSE(window->close());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(dialogs.scriptUsedUp());
    window->setDialogs(nullptr);
}

TEST(MainWindow, DeletingAUsedTextureAsksAndUndoesAndDroppedFilesAreImported)
{
    QTemporaryDir files;
    MainWindow* window = MainWindow::instance();
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    ScriptedDialogs dialogs;
    window->setDialogs(&dialogs);
    dialogs.answers = {Dialogs::No};
    trigger("New Project");
    dialogs.files = {{writePng(files.path(), "tile_color.png"), writePng(files.path(), "tile_ao.png")}};
    trigger("Import PBR Images...");

    ProjectBrowserDock* browser = window->browserDock();
    Velmor::ProjectData& store = window->document()->store();
    browser->selectRecord(RecordRef(store.textures[0].get()));
    dialogs.answers = {Dialogs::No};
    browser->deleteAction()->trigger();
    EXPECT_EQ(store.textures.size(), 2u);
    ASSERT_EQ(dialogs.questions.size(), 2);
    EXPECT_EQ(dialogs.questions.last(),
              "'tile_color' is used by:\nSurface 'NewSurface', layer 'color'\n\nDelete it and clear these references?");

    dialogs.answers = {Dialogs::Yes};
    browser->deleteAction()->trigger();
    ASSERT_EQ(store.textures.size(), 1u);
    EXPECT_EQ(store.surfaces[0]->layers[0].texture, nullptr);
    // The browser moved on to a record that still exists.
    EXPECT_EQ(window->propertiesDock()->shownRecord(), browser->currentRecord());

    trigger("Undo Delete Texture 'tile_color'");
    ASSERT_EQ(store.textures.size(), 2u);
    EXPECT_EQ(store.surfaces[0]->layers[0].texture, store.textures[0].get());

    // Files dropped on the window: images become textures, meshes models.
    QMimeData dropped;
    dropped.setUrls({QUrl::fromLocalFile(writePng(files.path(), "extra.png")),
                     QUrl::fromLocalFile(files.path() + "/rock.obj")});
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &drop);
    EXPECT_EQ(store.textures.size(), 3u);
    ASSERT_EQ(store.models.size(), 1u);
    EXPECT_EQ(store.models[0]->name, "rock");
    EXPECT_EQ(store.surfaces.size(), 1u);
    EXPECT_TRUE(dialogs.scriptUsedUp());
    window->setDialogs(nullptr);
}

TEST(MainWindow, MeshMenuAndPanelDriveTheThreeDPreview)
{
    MainWindow* window = MainWindow::instance();
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    PreviewArea* area = window->centralArea()->previewArea();
    trigger("Bridge");
    EXPECT_EQ(area->preview()->settings().mesh, PreviewSettings::BridgeMesh);
    trigger("Plane");
    EXPECT_EQ(area->preview()->settings().mesh, PreviewSettings::PlaneMesh);
    EXPECT_EQ(area->panel()->meshBox()->currentText(), "Plane");
    area->panel()->lightingBox()->setCurrentText("Split lighting (2 light)");
    EXPECT_EQ(area->preview()->settings().lightingMode, SplitLighting);
    // The frame is drawn with every program linked.
    area->preview()->grabFramebuffer();
    EXPECT_TRUE(area->preview()->programsLinked());
}
