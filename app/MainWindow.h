#pragma once

#include <QMainWindow>

#include <memory>

class ProjectOverview;
class QDockWidget;
class QTextEdit;

namespace Velmor {
class ProjectData;
}

// The application's one main window. Created on first use on the GUI thread
// and kept until the process ends.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    static MainWindow* instance();

    QTextEdit* messageLog() const { return log; }
    QDockWidget* messageDock() const { return logDock; }
    ProjectOverview* overview() const { return projectOverview; }

    // The open project's store; never null (an empty store when untitled).
    Velmor::ProjectData* project() const { return store.get(); }
    // Empty for an untitled project.
    QString projectDirectory() const { return directory; }

    // Replaces the open project by the one saved in `projectDir`. A path that
    // is not a directory is logged as an error and changes nothing.
    bool loadProject(const QString& projectDir);

public slots:
    // Appends one log line in the colour of its severity.
    void onPrintMessage(QString text, int severity);

private:
    MainWindow();
    ~MainWindow() override;
    void createMenus();
    void createMessageLog();

    QTextEdit* log = nullptr;
    QDockWidget* logDock = nullptr;
    ProjectOverview* projectOverview = nullptr;
    std::unique_ptr<Velmor::ProjectData> store;
    QString directory;
};
