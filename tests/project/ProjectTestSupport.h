#pragma once

#include "ImageFile.h"
#include "ImageSynthesizer.h"
#include "LogMessage.h"
#include "MessageHandler.h"
#include "ProjectData.h"
#include "SurfaceSynthesisContext.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

// Collects every log line emitted while it lives.
struct LogCapture
{
    std::vector<std::pair<QString, int>> messages;
    QMetaObject::Connection connection = QObject::connect(
        MessageHandler::instance(), &MessageHandler::onMessage,
        [this](QString text, int severity) { messages.emplace_back(text, severity); });
    ~LogCapture() { QObject::disconnect(connection); }

    int count(int severity, const QString& part = QString()) const // lines of this severity containing `part`
    {
        return int(std::count_if(messages.begin(), messages.end(),
                                 [&](const auto& m) { return m.second == severity && m.first.contains(part); }));
    }
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

// A smooth, non-repeating 8-bit PNG pattern; `phase` makes different images.
inline Image patternImage(uint32_t width, uint32_t height, PixelFormat format, float phase = 0.0f)
{
    Image image(width, height, format);
    const uint32_t c = image.channels();
    for (uint64_t i = 0; i < image.floatCount(); ++i) {
        const uint64_t x = i / c % width, y = i / c / width, k = i % c;
        image.data[i] = 0.5f + 0.4f * std::sin(0.37f * float(x * (k + 1)) + 0.23f * float(y) + phase);
    }
    for (uint64_t i = 0; format == Normal && i < image.pixelCount(); ++i) {
        float* p = image.data + 3 * i;
        p[0] -= 0.5f;
        p[1] -= 0.5f;
        const float length = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
        for (int k = 0; k < 3; ++k)
            p[k] /= length;
    }
    image.fileType = FilePNG;
    image.sampleType = UInt8;
    return image;
}

inline QString writeTestImage(const QString& path, uint32_t width, uint32_t height, PixelFormat format)
{
    saveImage(path, patternImage(width, height, format));
    return path;
}

inline Image constantImage(uint32_t width, uint32_t height, PixelFormat format, float value)
{
    Image image(width, height, format);
    std::fill(image.data, image.data + image.floatCount(), value);
    return image;
}

// A texture record holding `image` directly, no file involved.
inline Velmor::ProjectData::TextureData* addImageTexture(Velmor::ProjectData& store, const std::string& name,
                                                         Image image)
{
    store.textures.push_back(std::make_unique<Velmor::ProjectData::TextureData>());
    store.textures.back()->name = name;
    store.textures.back()->image = std::move(image);
    return store.textures.back().get();
}

// Small patches so that a run over a few dozen pixels has many of them.
inline void smallPatches(Velmor::ProjectData::SurfaceData& surface, uint32_t width, uint32_t height)
{
    for (const auto& synthesizer : surface.synthesizers) {
        auto* params = static_cast<Velmor::ImageSynthesizer::PatchSynthesizerParams*>(synthesizer->params);
        params->targetWidth = width;
        params->targetHeight = height;
        params->patchSize = 8;
        params->patchBoundary = 2;
    }
}

inline bool samePixels(const Image& a, const Image& b)
{
    return a.format == b.format && a.width == b.width && a.height == b.height && !a.isEmpty()
        && std::memcmp(a.data, b.data, a.floatCount() * sizeof(float)) == 0;
}

inline bool strictlyRising(const std::vector<int>& values)
{
    return !values.empty()
        && std::adjacent_find(values.begin(), values.end(), std::greater_equal<int>()) == values.end();
}

// The totals of every "N patches out of M timed out" line: one per synthesizer pass.
inline std::vector<int> passPatchTotals(const LogCapture& log)
{
    std::vector<int> totals;
    for (const auto& message : log.messages) {
        const auto match = QRegularExpression("(\\d+) patches out of (\\d+) timed out").match(message.first);
        if (match.hasMatch())
            totals.push_back(match.captured(2).toInt());
    }
    return totals;
}
