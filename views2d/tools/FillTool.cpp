#include "FillTool.h"

#include "DirectionValues.h"
#include "FloodFill.h"
#include "ImageEditCommand.h"
#include "LogMessage.h"
#include "MessageSeverity.h"
#include "ProjectDocument.h"

#include <algorithm>
#include <cmath>

namespace {

QString fillText(PaintMap map)
{
    switch (map) {
    case PaintMap::Direction: return QStringLiteral("Fill Direction Map");
    case PaintMap::Scale: return QStringLiteral("Fill Scale Map");
    case PaintMap::Mask: return QStringLiteral("Fill Mask");
    }
    return QString();
}

} // namespace

FillTool::FillTool(PaintContext* context, QObject* parent)
    : QObject(parent)
    , context(context)
{
}

void FillTool::press(QPointF uv)
{
    if (!std::isfinite(uv.x()) || !std::isfinite(uv.y()))
        return;
    ProjectDocument* document = context->document;
    if (document->isReadOnly()) {
        logMessage(Info, QStringLiteral("Painting waits until the synthesis run has ended."));
        return;
    }
    const BrushSettings& settings = context->settings;
    const MapTarget target = context->target(settings.targetMap);
    if (!target.isValid())
        return;
    Image& map = *target.image;
    const uint32_t channels = map.channels();
    const bool directions = settings.targetMap == PaintMap::Direction;

    std::vector<uint8_t> area;
    if (settings.fillMode == FillMode::Flood) {
        const int32_t x = int32_t(std::floor(std::clamp(uv.x(), -1.0, 2.0) * map.width));
        const int32_t y = int32_t(std::floor(std::clamp(uv.y(), -1.0, 2.0) * map.height));
        area = floodArea(map, x, y, directions ? 2 : channels, settings.floodTolerance);
    }
    const double angle = settings.directionDegrees * M_PI / 180.0;
    const Direction direction = normalised({float(std::sin(angle)), float(std::cos(angle))});
    const float value = paintValue(settings, settings.targetMap);

    const Image before = map;
    // Without the copy the fill could not be undone.
    if (before.isEmpty()) {
        logMessage(Error, QStringLiteral("Not enough memory to fill '%1'.")
                              .arg(QString::fromStdString(target.owner.name())));
        return;
    }
    for (size_t p = 0; p < map.pixelCount(); ++p) {
        if (!area.empty() && !area[p])
            continue;
        float* pixel = map.data + size_t(channels) * p;
        if (directions)
            writeDirection(pixel, channels, direction);
        else
            std::fill_n(pixel, channels, value);
    }
    auto* command = new ImageEditCommand(document, target.owner, &map, before, fillText(settings.targetMap));
    if (command->isEmpty())
        delete command;
    else if (!document->push(command))
        before.copyTo(map);
}
