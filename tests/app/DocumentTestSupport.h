#pragma once

#include "MessageHandler.h"
#include "MessageSeverity.h"
#include "ProjectDocument.h"
#include "ProjectSaver.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <map>
#include <ostream>
#include <vector>

// Readable QString values in failure messages.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

// Collects every log line emitted while it lives.
struct LogCapture
{
    std::vector<std::pair<QString, int>> messages;
    QMetaObject::Connection connection = QObject::connect(
        MessageHandler::instance(), &MessageHandler::onMessage,
        [this](QString text, int severity) { messages.emplace_back(text, severity); });
    ~LogCapture() { QObject::disconnect(connection); }

    bool contains(const QString& text, int severity) const
    {
        for (const auto& m : messages)
            if (m.first == text && m.second == severity)
                return true;
        return false;
    }
};

// Writes an 8-bit PNG: a gradient in colour, or grey when `gray`.
inline QString writePng(const QString& directory, const QString& name, bool gray = false, int size = 16)
{
    QImage image(size, size, gray ? QImage::Format_Grayscale8 : QImage::Format_RGB888);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            image.setPixelColor(x, y, QColor(x * 255 / size, y * 255 / size, 200));
    const QString path = directory + "/" + name;
    image.save(path);
    return path;
}

// Every file the saver writes for the project, by path relative to the
// save directory. Each call saves into a fresh directory.
using Snapshot = std::map<QString, QByteArray>;

inline Snapshot saveSnapshot(ProjectDocument& document)
{
    QTemporaryDir directory;
    Velmor::ProjectSaver(directory.path()).save(document.store());
    Snapshot files;
    QDirIterator it(directory.path(), QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        QFile file(path);
        file.open(QIODevice::ReadOnly);
        files[QDir(directory.path()).relativeFilePath(path)] = file.readAll();
    }
    // Texture pixels are not saved with the project; compare them here.
    for (const auto& texture : document.store().textures) {
        const Image& image = texture->image;
        QByteArray bytes(reinterpret_cast<const char*>(&image.format), sizeof image.format);
        bytes.append(reinterpret_cast<const char*>(image.data), int(image.floatCount() * sizeof(float)));
        files["pixels of " + QString::fromStdString(texture->name)] = bytes;
    }
    return files;
}

// Names of the files that differ between two snapshots, for readable failures.
inline QStringList differences(const Snapshot& a, const Snapshot& b)
{
    QStringList names;
    for (const auto& [name, bytes] : a) {
        auto other = b.find(name);
        if (other == b.end() || other->second != bytes)
            names << name;
    }
    for (const auto& entry : b)
        if (!a.count(entry.first))
            names << entry.first;
    return names;
}
