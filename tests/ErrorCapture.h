#pragma once

#include "MessageHandler.h"

#include <QObject>
#include <QStringList>

#include <string>

// Collects the errors (severity 2) logged while it lives, so a test can
// demand that drawing or loading logged none.
class ErrorCapture
{
public:
    ErrorCapture()
        : connection(QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage,
                                      [this](const QString& text, int severity) {
                                          if (severity == 2)
                                              errors << text;
                                      }))
    {
    }
    ErrorCapture(const ErrorCapture&) = delete; // the connection captures this
    ErrorCapture& operator=(const ErrorCapture&) = delete;
    ~ErrorCapture() { QObject::disconnect(connection); }

    bool empty() const { return errors.isEmpty(); }
    std::string text() const { return errors.join('\n').toStdString(); }

private:
    QStringList errors; // before the connection, which writes to it
    QMetaObject::Connection connection;
};
