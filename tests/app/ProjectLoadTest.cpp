#include "LayerList.h"
#include "LogDock.h"
#include "MainWindow.h"
#include "ProjectBrowserDock.h"
#include "ProjectDocument.h"
#include "ProjectModel.h"
#include "PropertiesDock.h"
#include "SurfacePanel.h"
#include "TexturePanel.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QTest>
#include <QTextEdit>
#include <QTreeView>

namespace {

QStringList logTexts()
{
    return MainWindow::instance()->logDock()->log()->toPlainText().split('\n');
}

QStringList groupNames(ProjectModel::Group group)
{
    const ProjectModel* model = MainWindow::instance()->browserDock()->projectModel();
    QStringList names;
    for (int row = 0; row < model->rowCount(model->groupIndex(group)); ++row)
        names << model->index(row, 0, model->groupIndex(group)).data().toString();
    return names;
}

} // namespace

TEST(ProjectLoad, SampleProjectFillsLogTitleBrowserAndPanels)
{
    MainWindow* window = MainWindow::instance();
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    const QString dir = QDir::cleanPath(QStringLiteral(ONDRELS_SAMPLE_PROJECT_DIR));

    ASSERT_TRUE(window->loadProject(QStringLiteral(ONDRELS_SAMPLE_PROJECT_DIR)));
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Ondrels - ") + dir + "[*]");
    EXPECT_FALSE(window->isWindowModified());
    EXPECT_EQ(window->document()->directory(), dir);

    const QStringList lines = logTexts();
    for (const QString& expected : {"Loading project from: " + dir, QString("Loading texture file: moss_mask.vmt"),
                                    QString("Loading direction map file: Swirl.vdm")})
        EXPECT_TRUE(lines.contains(expected)) << qPrintable(expected);
    // Mixed surfaces are read after every plain surface they may name.
    EXPECT_LT(lines.indexOf("Loading surface file: Moss.vms"),
              lines.indexOf("Loading mixed surface file: MossyCobblestones.vmsm"));
    EXPECT_EQ(window->document()->store().surfaces.size(), 3u);

    // The browser lists every record; selecting one shows its panel.
    EXPECT_EQ(groupNames(ProjectModel::TexturesGroup).size(), 9);
    EXPECT_TRUE(groupNames(ProjectModel::SurfacesGroup).contains("MossyCobblestones"));
    EXPECT_TRUE(groupNames(ProjectModel::UtilityMapsGroup).contains("Swirl"));
    ProjectBrowserDock* browser = window->browserDock();
    const ProjectModel* model = browser->projectModel();
    const QModelIndex surfaces = model->groupIndex(ProjectModel::SurfacesGroup);
    const int moss = groupNames(ProjectModel::SurfacesGroup).indexOf("Moss");
    ASSERT_GE(moss, 0);
    browser->view()->setCurrentIndex(model->index(moss, 0, surfaces));
    EXPECT_EQ(window->propertiesDock()->shownRecord().name(), "Moss");
    EXPECT_TRUE(window->propertiesDock()->surfacePanel()->isVisible());
    EXPECT_EQ(window->propertiesDock()->surfacePanel()->layerList()->list()->count(), 4);

    const QModelIndex textures = model->groupIndex(ProjectModel::TexturesGroup);
    browser->view()->setCurrentIndex(model->index(0, 0, textures));
    EXPECT_TRUE(window->propertiesDock()->texturePanel()->isVisible());
    EXPECT_FALSE(window->propertiesDock()->surfacePanel()->isVisible());
    EXPECT_TRUE(window->propertiesDock()->texturePanel()->statusLabel()->text().endsWith(".png"));
}

TEST(ProjectLoad, MissingDirectoryIsLoggedAndChangesNothing)
{
    MainWindow* window = MainWindow::instance();
    const QString title = window->windowTitle();
    Velmor::ProjectData* before = &window->document()->store();
    const QString missing = QDir::temp().filePath("ondrels-no-such-project-dir");
    ASSERT_FALSE(QFileInfo::exists(missing));

    EXPECT_FALSE(window->loadProject(missing));
    EXPECT_EQ(logTexts().last(), "Project directory not found: " + missing);
    EXPECT_FALSE(window->loadProject(QString()));
    // A file is not a project directory either.
    EXPECT_FALSE(window->loadProject(QStringLiteral(ONDRELS_SAMPLE_PROJECT_DIR "/Images/moss_mask.png")));
    EXPECT_EQ(window->windowTitle(), title);
    EXPECT_EQ(&window->document()->store(), before);
}
