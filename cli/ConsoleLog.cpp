#include "ConsoleLog.h"

#include "MessageHandler.h"
#include "MessageSeverity.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace {

constexpr int barWidth = 40;

const char* colourOf(int severity)
{
    switch (severity) {
    case Warning: return "\033[33m"; // orange-yellow
    case Error: return "\033[31m";   // red
    case Success: return "\033[94m"; // light blue
    default: return "";              // the terminal's own colour
    }
}

} // namespace

ConsoleLog::ConsoleLog() : terminal(stderrIsTerminal())
{
    MessageHandler* handler = MessageHandler::instance();
    connection = QObject::connect(
        handler, &MessageHandler::onMessage, handler,
        [this](const QString& text, int severity) { print(text, severity); }, Qt::DirectConnection);
}

ConsoleLog::~ConsoleLog()
{
    QObject::disconnect(connection);
    endProgress();
}

bool ConsoleLog::stderrIsTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

void ConsoleLog::print(const QString& text, int severity)
{
    std::lock_guard<std::mutex> guard(lock);
    if (severity == Error) {
        const auto capture = captures.find(std::this_thread::get_id());
        if (capture != captures.end()) {
            capture->second << text.trimmed();
            return;
        }
    }
    if (quiet && (severity == Info || severity == Success))
        return;

    clearBarLine();
    const QByteArray bytes = text.toLocal8Bit();
    const char* colour = terminal ? colourOf(severity) : "";
    const bool coloured = *colour != '\0';
    std::fprintf(stderr, "%s%s%s\n", colour, bytes.constData(), coloured ? "\033[0m" : "");
    drawBar();
    std::fflush(stderr);
}

void ConsoleLog::progress(int percent)
{
    std::lock_guard<std::mutex> guard(lock);
    if (!terminal)
        return;
    percent = std::clamp(percent, 0, 100);
    if (percent == barPercent)
        return;
    barPercent = percent;
    drawBar();
    std::fflush(stderr);
}

void ConsoleLog::endProgress()
{
    std::lock_guard<std::mutex> guard(lock);
    if (barPercent < 0)
        return;
    std::fputc('\n', stderr);
    std::fflush(stderr);
    barPercent = -1;
}

void ConsoleLog::startCapture()
{
    std::lock_guard<std::mutex> guard(lock);
    captures[std::this_thread::get_id()].clear();
}

QStringList ConsoleLog::stopCapture()
{
    std::lock_guard<std::mutex> guard(lock);
    QStringList result;
    const auto capture = captures.find(std::this_thread::get_id());
    if (capture != captures.end()) {
        result.swap(capture->second);
        captures.erase(capture);
    }
    return result;
}

void ConsoleLog::clearBarLine()
{
    if (barPercent >= 0)
        std::fputs("\r\033[K", stderr);
}

void ConsoleLog::drawBar()
{
    if (barPercent < 0)
        return;
    char bar[barWidth + 1];
    const int filled = barPercent * barWidth / 100;
    for (int i = 0; i < barWidth; ++i)
        bar[i] = i < filled ? '#' : '.';
    bar[barWidth] = '\0';
    std::fprintf(stderr, "\r[%s] %3d%%", bar, barPercent);
}
