#include "LogMessage.h"
#include "LogDock.h"
#include "MainWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDockWidget>
#include <QTest>
#include <QTextBlock>
#include <QTextEdit>
#include <QThread>

namespace {

std::vector<std::pair<QString, QColor>> logLines()
{
    std::vector<std::pair<QString, QColor>> lines;
    const QTextDocument* document = MainWindow::instance()->logDock()->log()->document();
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        lines.emplace_back(block.text(), block.begin().fragment().charFormat().foreground().color());
    return lines;
}

const QColor white(255, 255, 255), orange(255, 128, 0), red(255, 0, 0), lightBlue(121, 155, 227);

} // namespace

TEST(MessageLog, WelcomeLinesThenColoursBySeverity)
{
    MainWindow* window = MainWindow::instance();
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    EXPECT_TRUE(window->logDock()->log()->isReadOnly());

    std::vector<std::pair<QString, QColor>> lines = logLines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], std::make_pair(QString("Welcome to Ondrels!"), white));
    EXPECT_EQ(lines[1], std::make_pair(QString("HAVE FUN!"), white));

    // An unknown severity keeps the colour the log had before it.
    const std::pair<int, QColor> messages[] = {{Success, lightBlue}, {Info, white}, {Warning, orange},
                                               {7, white},          {Error, red},  {-1, white}};
    const size_t start = lines.size();
    for (const auto& [severity, colour] : messages)
        logMessage(severity, "severity %d", severity);
    lines = logLines();
    ASSERT_EQ(lines.size(), start + std::size(messages));
    for (size_t i = 0; i < std::size(messages); ++i) {
        EXPECT_EQ(lines[start + i].first, QString("severity %1").arg(messages[i].first));
        EXPECT_EQ(lines[start + i].second, messages[i].second) << "severity " << messages[i].first;
    }
}

TEST(MessageLog, WorkerThreadMessagesArriveInOrderOnGuiThread)
{
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
    const auto lines = logLines();
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(lines[start + i].first, QString("worker %1").arg(i));
    EXPECT_EQ(lines[start + 2].second, red);
}

TEST(MessageLog, DockCanMoveAndFloatButNotClose)
{
    QDockWidget* dock = MainWindow::instance()->logDock();
    ASSERT_NE(dock, nullptr);
    EXPECT_EQ(MainWindow::instance()->dockWidgetArea(dock), Qt::LeftDockWidgetArea);
    EXPECT_FALSE(dock->features().testFlag(QDockWidget::DockWidgetClosable));
    EXPECT_TRUE(dock->features().testFlag(QDockWidget::DockWidgetMovable) &&
                dock->features().testFlag(QDockWidget::DockWidgetFloatable));
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
