#pragma once

#include "RecordRef.h"

#include <QMainWindow>

#include <memory>

class CentralArea;
class LogDock;
class PaintToolBox;
class ProjectBrowserDock;
class ProjectDocument;
class ProjectFlows;
class PropertiesDock;
class QAction;
class DialogsSwitch;
class GenerationController;
class Dialogs;
class WidgetDialogs;

// The application's one main window. It only assembles: the document, the
// flows, the docks, the menus and the toolbar. Created on first use on the
// GUI thread and kept until the process ends.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    static MainWindow* instance();

    ProjectDocument* document() const { return projectDocument; }
    ProjectFlows* flows() const { return projectFlows; }
    LogDock* logDock() const { return log; }
    ProjectBrowserDock* browserDock() const { return browser; }
    PropertiesDock* propertiesDock() const { return properties; }
    CentralArea* centralArea() const { return central; }
    PaintToolBox* paintTools() const { return paintToolBox; }
    GenerationController* generationController() const { return generation; }

    // Tests replace the message boxes and file dialogs by their own.
    void setDialogs(Dialogs* dialogs);

    // Opens `directory` at once (the command line's project); false when it
    // is not a directory.
    bool loadProject(const QString& directory);

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    MainWindow();
    ~MainWindow() override;
    void createMenus();
    void updateTitle();
    void updateUndoActions();
    // First layout: browser and properties left, log below, views centre.
    void arrangeDocks();

    std::unique_ptr<WidgetDialogs> widgetDialogs;
    std::unique_ptr<DialogsSwitch> dialogs;
    ProjectDocument* projectDocument = nullptr;
    ProjectFlows* projectFlows = nullptr;
    GenerationController* generation = nullptr;
    LogDock* log = nullptr;
    ProjectBrowserDock* browser = nullptr;
    PropertiesDock* properties = nullptr;
    CentralArea* central = nullptr;
    PaintToolBox* paintToolBox = nullptr;
    QAction* undoAction = nullptr;
    QAction* redoAction = nullptr;
};
