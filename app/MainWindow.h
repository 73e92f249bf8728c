#pragma once

#include <QMainWindow>

class QDockWidget;
class QTextEdit;

// The application's one main window. Created on first use on the GUI thread
// and kept until the process ends.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    static MainWindow* instance();

    QTextEdit* messageLog() const { return log; }
    QDockWidget* messageDock() const { return logDock; }

public slots:
    // Appends one log line in the colour of its severity.
    void onPrintMessage(QString text, int severity);

private:
    MainWindow();
    void createMenus();
    void createMessageLog();

    QTextEdit* log = nullptr;
    QDockWidget* logDock = nullptr;
};
