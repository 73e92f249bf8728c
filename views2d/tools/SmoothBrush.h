#pragma once

#include "StrokeTool.h"

#include <vector>

// Blurs the map the tool bar names (direction, scale or mask) under the
// brush: each pixel moves towards the average of a box around it, a quarter
// of the radius wide, by the brush weight. Directions are averaged as
// vectors and stay unit vectors. Unlike the painting brushes, passing over a
// place again smooths it more.
class SmoothBrush : public StrokeTool
{
    Q_OBJECT
public:
    using StrokeTool::StrokeTool;

protected:
    PaintMap paintMap() const override { return context->settings.targetMap; }
    QString undoText() const override { return QStringLiteral("Smooth"); }
    void paintDab(const BrushDab& dab, QPointF direction) override;

private:
    // Scratch of one dab, kept so that a stroke allocates it once: the values
    // the boxes reach, their sums along rows, and the boxes' sums.
    std::vector<float> band;
    std::vector<float> rowSums;
    std::vector<float> columnSums;
};
