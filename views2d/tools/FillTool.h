#pragma once

#include "PaintContext.h"
#include "PaintTool.h"

#include <QObject>

// Fills the map the tool bar names with the tool bar's direction, scale or
// mask value at a click: the whole map, or the area of similar values
// around the pixel clicked. Each fill is one undo step.
class FillTool : public QObject, public PaintTool
{
    Q_OBJECT
public:
    explicit FillTool(PaintContext* context, QObject* parent = nullptr);

    void press(QPointF uv) override;
    void move(QPointF) override {}
    void release() override {}
    // A fill has no brush size.
    double outlineRadius() const override { return 0.0; }

private:
    PaintContext* context;
};
