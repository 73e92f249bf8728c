#pragma once

#include <QDockWidget>

class QTextEdit;

// The "System Messages" dock: every message of MessageHandler, coloured by
// severity. It can be moved and floated but not closed.
class LogDock : public QDockWidget
{
    Q_OBJECT
public:
    explicit LogDock(QWidget* parent = nullptr);

    QTextEdit* log() const { return text; }

public slots:
    // Appends one line in the colour of its severity; other severities keep
    // the colour the log had.
    void onPrintMessage(QString message, int severity);

private:
    QTextEdit* text;
};
