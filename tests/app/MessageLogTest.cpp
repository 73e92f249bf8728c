#include "LogMessage.h"
#include "MainWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDockWidget>
#include <QTest>
#include <QTextBlock>
#include <QTextEdit>
#include <QThread>

namespace {
struct Line
{
    QString text;
    QColor colour;
};

std::vector<Line> logLines()
{
    std::vector<Line> lines;
    const QTextDocument* document = MainWindow::instance()->messageLog()->document();
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        QColor colour;
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            colour = it.fragment().charFormat().foreground().color();
            break;
        }
        lines.push_back({block.text(), colour});
    }
    return lines;
}

const QColor white(255, 255, 255);
const QColor orange(255, 128, 0);
const QColor red(255, 0, 0);
const QColor lightBlue(121, 155, 227);
}

TEST(MessageLog, WelcomeLinesThenColoursBySeverity)
{
    MainWindow* window = MainWindow::instance();
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    EXPECT_TRUE(window->windowTitle().endsWith("Untitled Project"));

    std::vector<Line> lines = logLines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, "Welcome to Ondrels!");
    EXPECT_EQ(lines[0].colour, white);
    EXPECT_EQ(lines[1].text, "HAVE FUN!");
    EXPECT_EQ(lines[1].colour, white);

    const size_t start = lines.size();
    logMessage(Success, QStringLiteral("Texture synthesis finished."));
    logMessage(Info, QStringLiteral("Synthesizer started"));
    logMessage(Warning, QStringLiteral("warning line"));
    logMessage(7, QStringLiteral("unknown severity"));
    logMessage(Error, QStringLiteral("error line"));
    logMessage(-1, QStringLiteral("negative severity"));
    lines = logLines();
    ASSERT_EQ(lines.size(), start + 6);
    EXPECT_EQ(lines[start].colour, lightBlue);
    EXPECT_EQ(lines[start + 1].colour, white);
    EXPECT_EQ(lines[start + 2].colour, orange);
    // An unknown severity keeps the colour the log had before it.
    EXPECT_EQ(lines[start + 3].text, "unknown severity");
    EXPECT_EQ(lines[start + 3].colour, white);
    EXPECT_EQ(lines[start + 4].colour, red);
    EXPECT_EQ(lines[start + 5].colour, white);
    EXPECT_TRUE(window->messageLog()->isReadOnly());
    EXPECT_LE(window->messageLog()->maximumHeight(), 300);
}

TEST(MessageLog, WorkerThreadMessagesArriveInOrderOnGuiThread)
{
    MainWindow* window = MainWindow::instance();
    const size_t start = logLines().size();
    const int count = 200;
    QThread* worker = QThread::create([] {
        for (int i = 0; i < count; ++i)
            logMessage(i % 4, "worker %d", i);
    });
    worker->start();
    ASSERT_TRUE(worker->wait(10000));
    delete worker;
    // Queued: nothing has reached the widget until the GUI thread's loop runs.
    EXPECT_EQ(logLines().size(), start);
    QTRY_COMPARE_WITH_TIMEOUT(logLines().size(), start + count, 10000);
    const std::vector<Line> lines = logLines();
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(lines[start + i].text, QString("worker %1").arg(i));
    EXPECT_EQ(lines[start + 2].colour, red);
    (void)window;
}

TEST(MessageLog, DockCanMoveAndFloatButNotClose)
{
    MainWindow* window = MainWindow::instance();
    QDockWidget* dock = window->messageDock();
    ASSERT_NE(dock, nullptr);
    EXPECT_EQ(dock->windowTitle(), "System Messages");
    EXPECT_EQ(window->dockWidgetArea(dock), Qt::LeftDockWidgetArea);
    EXPECT_FALSE(dock->features().testFlag(QDockWidget::DockWidgetClosable));
    EXPECT_TRUE(dock->features().testFlag(QDockWidget::DockWidgetMovable));
    EXPECT_TRUE(dock->features().testFlag(QDockWidget::DockWidgetFloatable));

    dock->setFloating(true);
    EXPECT_TRUE(dock->isFloating());
    dock->setFloating(false);
    window->addDockWidget(Qt::RightDockWidgetArea, dock);
    EXPECT_EQ(window->dockWidgetArea(dock), Qt::RightDockWidgetArea);
    window->addDockWidget(Qt::LeftDockWidgetArea, dock);
}

TEST(MessageLog, WindowShowsTheLogOnScreen)
{
    MainWindow* window = MainWindow::instance();
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    QTest::qWait(50);
    // The log paints its lines light on a dark page: the grab of its viewport
    // is mostly dark with a fair number of bright text pixels.
    const QImage grab = window->messageLog()->viewport()->grab().toImage();
    ASSERT_FALSE(grab.isNull());
    int bright = 0, dark = 0;
    for (int y = 0; y < grab.height(); ++y)
        for (int x = 0; x < grab.width(); ++x) {
            const int value = qGray(grab.pixel(x, y));
            bright += value > 180;
            dark += value < 60;
        }
    EXPECT_GT(bright, 50);
    EXPECT_GT(dark, bright);
}

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    // Listing the tests (CTest's discovery) must work without a display.
    if (::testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    QApplication app(argc, argv);
    QApplication::setStyle("Fusion");
    return RUN_ALL_TESTS();
}
