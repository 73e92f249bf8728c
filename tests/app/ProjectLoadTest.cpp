#include "MainWindow.h"
#include "ProjectData.h"
#include "ProjectOverview.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTest>
#include <QTextEdit>
#include <QTreeWidget>

namespace {

QStringList logTexts()
{
    return MainWindow::instance()->messageLog()->toPlainText().split('\n');
}

QTreeWidgetItem* findRow(QTreeWidget* tree, const QString& text)
{
    const QList<QTreeWidgetItem*> found = tree->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
    return found.isEmpty() ? nullptr : found.first();
}

// Mean blue minus mean red of a picture.
double blueOverRed(const QImage& image)
{
    double sum = 0.0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            sum += qBlue(image.pixel(x, y)) - qRed(image.pixel(x, y));
    return sum / (double(image.width()) * image.height());
}

} // namespace

TEST(ProjectLoad, SampleProjectFillsLogTitleAndOverview)
{
    MainWindow* window = MainWindow::instance();
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    const QString dir = QDir::cleanPath(QStringLiteral(ONDRELS_SAMPLE_PROJECT_DIR));

    ASSERT_TRUE(window->loadProject(QStringLiteral(ONDRELS_SAMPLE_PROJECT_DIR)));
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Ondrels - ") + dir);
    EXPECT_EQ(window->projectDirectory(), dir);

    const QStringList lines = logTexts();
    for (const QString& expected : {"Loading project from: " + dir, QString("Loading texture file: moss_mask.vmt"),
                                    QString("Loading direction map file: Swirl.vdm")})
        EXPECT_TRUE(lines.contains(expected)) << qPrintable(expected);
    // Mixed surfaces are read after every plain surface they may name.
    EXPECT_LT(lines.indexOf("Loading surface file: Moss.vms"),
              lines.indexOf("Loading mixed surface file: MossyCobblestones.vmsm"));
    EXPECT_EQ(window->project()->surfaces.size(), 3u);

    // The overview lists the records and shows the first texture.
    ProjectOverview* overview = window->overview();
    QTreeWidget* tree = overview->recordTree();
    ASSERT_TRUE(findRow(tree, "Textures") && findRow(tree, "MossyCobblestones") && findRow(tree, "Moss") &&
                findRow(tree, "cobblestones_normal"));
    EXPECT_EQ(findRow(tree, "Textures")->childCount(), 9);
    EXPECT_EQ(findRow(tree, "Moss")->childCount(), 6); // four layers, direction and scale map
    EXPECT_EQ(overview->previewImage().size(), QSize(512, 512));

    // A normal map shows bluish; the colour of the cobblestones does not.
    tree->setCurrentItem(findRow(tree, "cobblestones_normal"));
    EXPECT_GT(blueOverRed(overview->previewImage()), 60.0);
    tree->setCurrentItem(findRow(tree, "cobblestones_color"));
    EXPECT_LT(blueOverRed(overview->previewImage()), 5.0);
}

TEST(ProjectLoad, MissingDirectoryIsLoggedAndChangesNothing)
{
    MainWindow* window = MainWindow::instance();
    const QString title = window->windowTitle();
    Velmor::ProjectData* before = window->project();
    const QString missing = QDir::temp().filePath("ondrels-no-such-project-dir");
    ASSERT_FALSE(QFileInfo::exists(missing));

    EXPECT_FALSE(window->loadProject(missing));
    EXPECT_EQ(logTexts().last(), "Project directory not found: " + missing);
    EXPECT_FALSE(window->loadProject(QString()));
    // A file is not a project directory either.
    EXPECT_FALSE(window->loadProject(QStringLiteral(ONDRELS_SAMPLE_PROJECT_DIR "/Images/moss_mask.png")));
    EXPECT_EQ(window->windowTitle(), title);
    EXPECT_EQ(window->project(), before);
    EXPECT_TRUE(window->projectDirectory().isEmpty());
}
