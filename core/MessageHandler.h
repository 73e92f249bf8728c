#pragma once

#include <QObject>
#include <QString>

// The one channel for user-visible log lines. Any thread may emit; listeners
// connected with Qt's automatic connection receive them on their own thread.
class MessageHandler : public QObject
{
    Q_OBJECT
public:
    static MessageHandler* instance();

signals:
    void onMessage(QString text, int severity);

private:
    MessageHandler() = default;
};
