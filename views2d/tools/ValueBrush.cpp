#include "ValueBrush.h"

#include <algorithm>
#include <cmath>

ValueBrush::ValueBrush(PaintContext* context, PaintMap map, QObject* parent)
    : StrokeTool(context, parent)
    , map(map)
{
}

float ValueBrush::value() const
{
    return paintValue(context->settings, map);
}

QString ValueBrush::undoText() const
{
    if (map == PaintMap::Mask)
        return context->settings.maskMode == MaskMode::Paint ? QStringLiteral("Paint Mask")
                                                             : QStringLiteral("Erase Mask");
    return QStringLiteral("Paint Scale");
}

void ValueBrush::paintDab(const BrushDab& dab, QPointF)
{
    Image& image = *target.image;
    const uint32_t channels = image.channels();
    const float strength = float(context->settings.strength);
    const float to = value();
    dab.forEachPixel(image.width, image.height, [&](int32_t x, int32_t y, double weight) {
        const float w = float(weight) * strength;
        if (!raiseCoverage(x, y, w))
            return;
        const size_t at = channels * (size_t(x) + size_t(image.width) * size_t(y));
        for (uint32_t c = 0; c < channels; ++c) {
            const float from = std::isfinite(before.data[at + c]) ? before.data[at + c] : to;
            image.data[at + c] = from + (to - from) * w;
        }
    });
}
