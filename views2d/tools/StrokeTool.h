#pragma once

#include "BrushDab.h"
#include "PaintContext.h"
#include "PaintTool.h"

#include <QObject>
#include <QString>

#include <vector>

// The common part of the brushes: a stroke is a row of dabs spaced a
// quarter of the radius apart along the pointer's path, so that a fast
// stroke leaves no gaps, and becomes one undo step when it ends. The map is
// painted as the stroke goes, so the view shows it; a stroke still under
// way when the document turns read-only, another edit or undo comes in, or
// records go, is taken back.
class StrokeTool : public QObject, public PaintTool
{
    Q_OBJECT
public:
    StrokeTool(PaintContext* context, QObject* parent = nullptr);

    void press(QPointF uv) override;
    void move(QPointF uv) override;
    void release() override;
    double outlineRadius() const override { return context->settings.radius; }

    bool isPainting() const { return painting; }
    // Puts back the pixels from before the stroke and forgets it.
    void cancel();

protected:
    virtual PaintMap paintMap() const = 0;
    virtual QString undoText() const = 0;
    // Paints one dab; `direction` is the stroke's direction there as a unit
    // vector in pixels of the shown image, (0, 0) for the dab of a press.
    virtual void paintDab(const BrushDab& dab, QPointF direction) = 0;
    // Tools that paint the stroke's direction wait for the pointer to move.
    virtual bool dabsAtPress() const { return true; }

    // Raises the stroke's coverage of pixel (x, y) to `weight`; false when an
    // earlier dab of the stroke already covered it more. Painting towards a
    // value by the coverage, from the pixels before the stroke, keeps a
    // stroke that passes a pixel twice from piling up beyond its strength.
    bool raiseCoverage(int32_t x, int32_t y, float weight);

    PaintContext* context;
    MapTarget target;
    // The map as it was when the stroke began.
    Image before;

private:
    void paintAt(QPointF uv, QPointF direction);
    QPointF shownDirection(QPointF from, QPointF to) const;

    std::vector<float> coverage;
    bool painting = false;
    bool pressDabbed = false;
    QPointF lastDab;
    double spacing = 1.0; // between dabs, in pixels of the map
    double aspect = 1.0;
};
