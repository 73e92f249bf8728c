#pragma once

#include <QMetaObject>
#include <QString>
#include <QStringList>

#include <map>
#include <mutex>
#include <thread>

// Prints the message log to stderr for the headless synthesizer: one line
// per message, coloured by severity when stderr is a terminal, and a
// progress bar that messages temporarily clear and redraw. While it exists
// it is a direct listener of MessageHandler, so messages print on the
// thread that logs them.
class ConsoleLog
{
public:
    ConsoleLog();
    ~ConsoleLog();
    ConsoleLog(const ConsoleLog&) = delete;
    ConsoleLog& operator=(const ConsoleLog&) = delete;

    // Quiet hides Info and Success messages; warnings and errors still print.
    void setQuiet(bool value) { quiet = value; }
    // Colours and the progress bar follow stderr by default; tests turn them off.
    void setTerminal(bool value) { terminal = value; }

    void print(const QString& text, int severity);
    // Draws the bar at `percent` (clamped to 0..100) when stderr is a terminal.
    void progress(int percent);
    // Ends the bar's line so that later output starts on a fresh one.
    void endProgress();

    // Holds back Error messages the calling thread logs from now on, to be
    // folded into one line by the caller; other messages still print.
    void startCapture();
    QStringList stopCapture();

    static bool stderrIsTerminal();

private:
    void clearBarLine();
    void drawBar();

    std::mutex lock;
    QMetaObject::Connection connection;
    bool quiet = false;
    bool terminal = false;
    std::map<std::thread::id, QStringList> captures; // one per capturing thread
    int barPercent = -1; // -1: no bar on screen
};
