#pragma once

#include "LayeredImage.h"
#include "LogMessage.h"
#include "MessageHandler.h"

#include <QObject>

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

// Small procedural inputs and a log recorder shared by the engine tests.
namespace EngineTest {

// Smooth but varied colour, so that patches differ from place to place.
inline void colourAt(int x, int y, int w, int h, float* rgb)
{
    const float u = 6.2831853f * float(x) / float(w);
    const float v = 6.2831853f * float(y) / float(h);
    rgb[0] = 0.5f + 0.4f * std::sin(3.0f * u + std::cos(2.0f * v));
    rgb[1] = 0.5f + 0.4f * std::cos(2.0f * v + std::sin(5.0f * u));
    rgb[2] = 0.5f + 0.3f * std::sin(u + 4.0f * v) * std::cos(2.0f * u);
}

// The grey layer is a fixed linear function of the colour layer.
inline float greyOf(const float* rgb)
{
    return 0.25f * rgb[0] + 0.5f * rgb[1] + 0.125f * rgb[2] + 0.0625f;
}

// Colour, Normal and Gray layers of w x h.
inline std::unique_ptr<LayeredImage> makeSource(int w, int h)
{
    auto source = std::make_unique<LayeredImage>();
    auto* colour = new Image(w, h, RGB);
    auto* normal = new Image(w, h, Normal);
    auto* grey = new Image(w, h, Gray);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            float* c = colour->pixelAt(x, y).values;
            colourAt(x, y, w, h, c);
            grey->pixelAt(x, y)[0] = greyOf(c);
            float* n = normal->pixelAt(x, y).values;
            const float nx = c[0] - 0.5f;
            const float ny = c[1] - 0.5f;
            const float len = std::sqrt(nx * nx + ny * ny + 1.0f);
            n[0] = nx / len;
            n[1] = ny / len;
            n[2] = 1.0f / len;
        }
    }
    source->setLayer("Diffuse", colour);
    source->setLayer("Normal", normal);
    source->setLayer("Height", grey);
    return source;
}

// Records every log line while alive.
class LogRecorder
{
public:
    LogRecorder()
    {
        connection = QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage,
                                      [this](QString text, int severity) { lines.emplace_back(text, severity); });
    }
    ~LogRecorder() { QObject::disconnect(connection); }

    bool has(const QString& text, int severity) const
    {
        for (const auto& line : lines)
            if (line.first == text && line.second == severity)
                return true;
        return false;
    }
    int count(int severity) const
    {
        int n = 0;
        for (const auto& line : lines)
            n += line.second == severity;
        return n;
    }
    bool anyContains(const QString& part, int severity) const
    {
        for (const auto& line : lines)
            if (line.second == severity && line.first.contains(part))
                return true;
        return false;
    }

    std::vector<std::pair<QString, int>> lines;

private:
    QMetaObject::Connection connection;
};

} // namespace EngineTest
