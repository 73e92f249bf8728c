#pragma once

#include "Image.h"
#include "ImageFile.h"
#include "LogMessage.h"
#include "MessageHandler.h"

#include <QDir>
#include <QFile>
#include <QString>

#include <utility>
#include <vector>

// Collects every log line emitted while it lives.
class LogCapture
{
public:
    LogCapture()
    {
        connection = QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage,
                                      [this](QString text, int severity) { messages.emplace_back(text, severity); });
    }
    ~LogCapture() { QObject::disconnect(connection); }

    // Lines of this severity that contain `part`.
    int count(int severity, const QString& part = QString()) const
    {
        int n = 0;
        for (const auto& message : messages)
            n += message.second == severity && message.first.contains(part);
        return n;
    }

    std::vector<std::pair<QString, int>> messages;

private:
    QMetaObject::Connection connection;
};

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(path.left(path.lastIndexOf('/')));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
}

// An 8-bit PNG of the given size whose pixels vary, saved at `path`.
inline QString writeTestImage(const QString& path, uint32_t width, uint32_t height, PixelFormat format)
{
    Image image(width, height, format);
    image.sampleType = UInt8;
    for (uint64_t i = 0; i < image.floatCount(); ++i)
        image.data[i] = float((i * 37) % 256) / 255.0f;
    saveImage(path, image);
    return path;
}
