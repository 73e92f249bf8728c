#pragma once

#include <QPointF>

// The active tool of the generated view. The view forwards left-button
// strokes to it in texture coordinates of the shown image: u = x / width and
// v = y / height, (0, 0) at the first pixel of the first row, so a tool paints
// every map at the map's own resolution whatever the size of the image shown.
// A stroke (press, moves, release) becomes one undo step on the document.
class PaintTool
{
public:
    virtual ~PaintTool() = default;

    virtual void press(QPointF uv) = 0;
    virtual void move(QPointF uv) = 0;
    virtual void release() = 0;

    // Radius of the brush outline the view draws around the cursor, in units
    // of the shown image's width; 0 draws no outline.
    virtual double outlineRadius() const = 0;
};
