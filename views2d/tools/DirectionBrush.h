#pragma once

#include "StrokeTool.h"

// Paints the stroke's direction into the current surface's direction map:
// each pixel turns from its direction before the stroke towards the
// stroke's, by the brush weight, and stays a unit vector.
class DirectionBrush : public StrokeTool
{
    Q_OBJECT
public:
    using StrokeTool::StrokeTool;

protected:
    PaintMap paintMap() const override { return PaintMap::Direction; }
    QString undoText() const override { return QStringLiteral("Paint Direction"); }
    void paintDab(const BrushDab& dab, QPointF direction) override;
    bool dabsAtPress() const override { return false; }
};
