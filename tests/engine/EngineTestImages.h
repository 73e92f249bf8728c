#pragma once

#include "LayeredImage.h"
#include "MessageHandler.h"
#include "MessageSeverity.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

// Small procedural inputs and a log recorder shared by the engine tests.
namespace EngineTest {

// The grey layer is a fixed linear function of the colour layer.
inline float greyOf(const float* rgb)
{
    return 0.25f * rgb[0] + 0.5f * rgb[1] + 0.125f * rgb[2] + 0.0625f;
}

// Diffuse, Normal and Height layers of w x h: smooth but varied, so that
// patches differ from place to place.
inline std::unique_ptr<LayeredImage> makeSource(int w, int h)
{
    auto source = std::make_unique<LayeredImage>();
    auto *colour = new Image(w, h, RGB), *normal = new Image(w, h, Normal), *grey = new Image(w, h, Gray);
    for (int i = 0; i < w * h; ++i) {
        const float u = 6.2831853f * float(i % w) / float(w), v = 6.2831853f * float(i / w) / float(h);
        float *c = colour->data + 3 * i, *n = normal->data + 3 * i;
        c[0] = 0.5f + 0.4f * std::sin(3.0f * u + std::cos(2.0f * v));
        c[1] = 0.5f + 0.4f * std::cos(2.0f * v + std::sin(5.0f * u));
        c[2] = 0.5f + 0.3f * std::sin(u + 4.0f * v) * std::cos(2.0f * u);
        grey->data[i] = greyOf(c);
        const float len = std::sqrt((c[0] - 0.5f) * (c[0] - 0.5f) + (c[1] - 0.5f) * (c[1] - 0.5f) + 1.0f);
        n[0] = (c[0] - 0.5f) / len;
        n[1] = (c[1] - 0.5f) / len;
        n[2] = 1.0f / len;
    }
    source->setLayer("Diffuse", colour);
    source->setLayer("Normal", normal);
    source->setLayer("Height", grey);
    return source;
}

// Records every log line while alive.
struct LogRecorder
{
    std::vector<std::pair<QString, int>> lines;
    QMetaObject::Connection connection = QObject::connect(
        MessageHandler::instance(), &MessageHandler::onMessage,
        [this](QString text, int severity) { lines.emplace_back(text, severity); });
    LogRecorder() = default;
    LogRecorder(const LogRecorder&) = delete; // the connection captures this
    ~LogRecorder() { QObject::disconnect(connection); }

    bool has(const QString& text, int severity) const
    {
        return std::find(lines.begin(), lines.end(), std::make_pair(text, severity)) != lines.end();
    }
    bool anyContains(const QString& part, int severity) const
    {
        return std::any_of(lines.begin(), lines.end(),
                           [&](const auto& l) { return l.second == severity && l.first.contains(part); });
    }
    int count(int severity) const
    {
        return int(std::count_if(lines.begin(), lines.end(), [&](const auto& l) { return l.second == severity; }));
    }
};

} // namespace EngineTest
