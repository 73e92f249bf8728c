#include "MainWindow.h"

#include "LogMessage.h"
#include "MessageHandler.h"
#include "ProjectData.h"
#include "ProjectLoader.h"
#include "ProjectOverview.h"

#include <QApplication>
#include <QColor>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QMenuBar>
#include <QTextEdit>

namespace {
const char* const titlePrefix = "Ondrels - ";

bool severityColour(int severity, QColor& colour)
{
    switch (severity) {
    case Info: colour = QColor(255, 255, 255); return true;
    case Warning: colour = QColor(255, 128, 0); return true;
    case Error: colour = QColor(255, 0, 0); return true;
    case Success: colour = QColor(121, 155, 227); return true;
    default: return false;
    }
}
}

MainWindow* MainWindow::instance()
{
    static MainWindow* window = nullptr;
    if (!window)
        window = new MainWindow;
    return window;
}

MainWindow::MainWindow()
    : store(std::make_unique<Velmor::ProjectData>())
{
    setWindowTitle(QString(titlePrefix) + "Untitled Project");
    resize(1280, 800);

    projectOverview = new ProjectOverview(this);
    projectOverview->showProject(store.get());
    setCentralWidget(projectOverview);

    createMessageLog();
    createMenus();

    logMessage(Info, QStringLiteral("Welcome to Ondrels!"));
    logMessage(Info, QStringLiteral("HAVE FUN!"));
}

MainWindow::~MainWindow() = default;

bool MainWindow::loadProject(const QString& projectDir)
{
    const QFileInfo info(projectDir);
    if (projectDir.isEmpty() || !info.isDir()) {
        logMessage(Error, QStringLiteral("Project directory not found: ") + projectDir);
        return false;
    }
    const QString path = QDir::cleanPath(info.absoluteFilePath());
    logMessage(Info, QStringLiteral("Loading project from: ") + path);
    std::unique_ptr<Velmor::ProjectData> loaded = Velmor::ProjectLoader(path).load();
    // The overview points into the old store: detach it before that store goes.
    projectOverview->showProject(nullptr);
    store = std::move(loaded);
    directory = path;
    projectOverview->showProject(store.get());
    setWindowTitle(QString(titlePrefix) + directory);
    logMessage(Success, "Project loaded: %d textures, %d surfaces, %d direction maps, %d scale maps",
               int(store->textures.size()), int(store->surfaces.size()), int(store->directionMaps.size()),
               int(store->scaleMaps.size()));
    return true;
}

void MainWindow::createMenus()
{
    QMenu* fileMenu = menuBar()->addMenu(tr("&File"));
    QAction* quit = fileMenu->addAction(tr("&Quit"));
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, qApp, &QApplication::closeAllWindows);
}

void MainWindow::createMessageLog()
{
    log = new QTextEdit;
    connect(MessageHandler::instance(), &MessageHandler::onMessage, this, &MainWindow::onPrintMessage);

    logDock = new QDockWidget(tr("System Messages"), this);
    logDock->setObjectName("SystemMessages");
    logDock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    log->setMaximumHeight(300);
    logDock->setWidget(log);
    log->setReadOnly(true);
    // The severity colours (white for plain lines) need a dark page.
    QPalette palette = log->palette();
    palette.setColor(QPalette::Base, QColor(32, 34, 40));
    palette.setColor(QPalette::Text, QColor(255, 255, 255));
    log->setPalette(palette);
    log->setTextColor(QColor(255, 255, 255));
    addDockWidget(Qt::LeftDockWidgetArea, logDock);
    // Wide enough for "Loading ... file: name" lines to fit on one line.
    resizeDocks({logDock}, {380}, Qt::Horizontal);
}

void MainWindow::onPrintMessage(QString text, int severity)
{
    const int weight = log->fontWeight();
    const QColor previous = log->textColor();
    QColor colour = previous;
    severityColour(severity, colour);
    log->setTextColor(colour);
    log->append(text);
    log->setFontWeight(weight);
    log->setTextColor(previous);
}
