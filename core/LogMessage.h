#pragma once

#include "MessageSeverity.h"

#include <QString>

// Emits one log line through MessageHandler.
void logMessage(int severity, const QString& text);

// printf-style variant, so that a caller logs a formatted value in one line:
// logMessage(Info, "%i patches out of %i timed out", timedOut, total).
void logMessage(int severity, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;
