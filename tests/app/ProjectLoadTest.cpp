#include "MainWindow.h"
#include "ProjectData.h"
#include "ProjectOverview.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QLabel>
#include <QTest>
#include <QTextBlock>
#include <QTextEdit>
#include <QTreeWidget>

namespace {

QStringList logTexts()
{
    QStringList texts;
    const QTextDocument* document = MainWindow::instance()->messageLog()->document();
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        texts << block.text();
    return texts;
}

QColor lastLineColour()
{
    const QTextBlock block = MainWindow::instance()->messageLog()->document()->lastBlock();
    return block.begin().fragment().charFormat().foreground().color();
}

QTreeWidgetItem* findRow(QTreeWidget* tree, const QString& text)
{
    const QList<QTreeWidgetItem*> found = tree->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
    return found.isEmpty() ? nullptr : found.first();
}

// Mean of the red and blue channels of a picture.
std::pair<double, double> redAndBlue(const QImage& image)
{
    double red = 0.0, blue = 0.0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            red += qRed(image.pixel(x, y));
            blue += qBlue(image.pixel(x, y));
        }
    const double count = double(image.width()) * image.height();
    return {red / count, blue / count};
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
    for (const QString& expected :
         {QStringLiteral("Loading project from: ") + dir, QStringLiteral("Loading texture file: cobblestones_color.vmt"),
          QStringLiteral("Loading texture file: moss_mask.vmt"), QStringLiteral("Loading direction map file: Swirl.vdm"),
          QStringLiteral("Loading scale map file: ScaleGradient.vsm"),
          QStringLiteral("Loading surface file: Cobblestones.vms"),
          QStringLiteral("Loading mixed surface file: MossyCobblestones.vmsm")})
        EXPECT_TRUE(lines.contains(expected)) << qPrintable(expected);
    // Mixed surfaces are read after every plain surface they may name.
    EXPECT_LT(lines.indexOf("Loading surface file: Moss.vms"),
              lines.indexOf("Loading mixed surface file: MossyCobblestones.vmsm"));
    EXPECT_EQ(window->project()->surfaces.size(), 3u);

    // The overview lists the records and shows the first texture.
    ProjectOverview* overview = window->overview();
    QTreeWidget* tree = overview->recordTree();
    QTreeWidgetItem* textures = findRow(tree, "Textures");
    ASSERT_NE(textures, nullptr);
    EXPECT_EQ(textures->childCount(), 9);
    ASSERT_NE(findRow(tree, "MossyCobblestones"), nullptr);
    EXPECT_EQ(findRow(tree, "Moss")->childCount(), 6); // four layers, direction and scale map
    EXPECT_EQ(overview->previewImage().size(), QSize(512, 512));
    // On screen it fits the preview.
    const QPixmap shown = overview->imagePreview()->pixmap(Qt::ReturnByValue);
    ASSERT_FALSE(shown.isNull());
    EXPECT_LE(shown.width(), overview->imagePreview()->width());
    EXPECT_GT(shown.width(), 64);

    // A normal map shows bluish; the colour of the cobblestones does not.
    QTreeWidgetItem* normalRow = findRow(tree, "cobblestones_normal");
    ASSERT_NE(normalRow, nullptr);
    tree->setCurrentItem(normalRow);
    const auto [normalRed, normalBlue] = redAndBlue(overview->previewImage());
    EXPECT_GT(normalBlue, normalRed + 60.0);
    tree->setCurrentItem(findRow(tree, "cobblestones_color"));
    const auto [colourRed, colourBlue] = redAndBlue(overview->previewImage());
    EXPECT_LT(colourBlue, colourRed + 5.0);
}

TEST(ProjectLoad, MissingDirectoryIsLoggedAndChangesNothing)
{
    MainWindow* window = MainWindow::instance();
    const QString title = window->windowTitle();
    Velmor::ProjectData* before = window->project();
    const QString missing = QDir::temp().filePath("ondrels-no-such-project-dir");
    ASSERT_FALSE(QFileInfo::exists(missing));

    EXPECT_FALSE(window->loadProject(missing));
    EXPECT_EQ(logTexts().last(), QStringLiteral("Project directory not found: ") + missing);
    EXPECT_EQ(lastLineColour(), QColor(255, 0, 0));
    EXPECT_FALSE(window->loadProject(QString()));
    // A file is not a project directory either.
    EXPECT_FALSE(window->loadProject(QStringLiteral(ONDRELS_SAMPLE_PROJECT_DIR "/Images/moss_mask.png")));
    EXPECT_EQ(window->windowTitle(), title);
    EXPECT_EQ(window->project(), before);
    EXPECT_TRUE(window->projectDirectory().isEmpty());
}
