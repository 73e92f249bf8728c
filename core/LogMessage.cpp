#include "LogMessage.h"

#include "MessageHandler.h"

#include <cstdarg>

void logMessage(int severity, const QString& text)
{
    emit MessageHandler::instance()->onMessage(text, severity);
}

void logMessage(int severity, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const QString text = QString::vasprintf(format, args);
    va_end(args);
    logMessage(severity, text);
}
