#pragma once

#include "StrokeTool.h"

// Paints one value into a single-value map: the scale brush paints the
// tool bar's scale into the current surface's scale map, the mask brush
// paints the output mask out (0) or erases it back in (1). Every channel of
// a pixel gets the value.
class ValueBrush : public StrokeTool
{
    Q_OBJECT
public:
    // `map` is PaintMap::Scale or PaintMap::Mask.
    ValueBrush(PaintContext* context, PaintMap map, QObject* parent = nullptr);

    // The value the brush paints with the current settings.
    float value() const;

protected:
    PaintMap paintMap() const override { return map; }
    QString undoText() const override;
    void paintDab(const BrushDab& dab, QPointF direction) override;

private:
    PaintMap map;
};
