#pragma once

#include <QMatrix4x4>
#include <QPointF>
#include <QSize>

// Zoom and pan of a 2D image view, and the mapping between widget pixels and
// texture coordinates of the shown image. Plain math, so that it is tested
// without a window.
//
// The view spans 2 units vertically (-1 at the bottom, +1 at the top) and
// 2 x (width / height) horizontally. The image is a quad from -1 to 1 in
// both directions, scaled by the image aspect in x, then by the zoom, then
// moved by the pan. At zoom 1 the image is exactly as tall as the view.
// Texture coordinates run 0..1 over the quad, v = 0 at the bottom row.
class ViewTransform
{
public:
    static constexpr float minimumZoom = 0.01f;

    // Right-button drag: each pixel to the right adds 0.01 to the zoom.
    void dragZoom(int dx);
    // Middle-button drag. The step is divided by the square root of the zoom,
    // not the zoom: the picture moves slower than the pointer when zoomed out
    // and faster when zoomed in. Users are used to that feel; keep it.
    void dragPan(int dx, int dy, int viewHeight);
    // Classic wheel delta, 120 per notch.
    void wheel(int delta);
    // Centres the image and makes it as large as fits the view's width,
    // but never taller than the view. Nothing for empty sizes.
    void fit(int viewWidth, int viewHeight, int imageWidth, int imageHeight);
    // One image pixel on one screen pixel vertically; the pan stays.
    void oneToOne(int viewHeight, int imageHeight);

    QMatrix4x4 projection(QSize view) const;
    QMatrix4x4 modelView(float imageAspect) const;
    QMatrix4x4 combined(QSize view, float imageAspect) const { return projection(view) * modelView(imageAspect); }

    // Widget pixel position (y down) to texture coordinates of the image and
    // back. Positions outside the image give coordinates outside 0..1.
    QPointF screenToTexture(QPointF screen, QSize view, float imageAspect) const;
    QPointF textureToScreen(QPointF texture, QSize view, float imageAspect) const;

    float zoom = 1.0f;
    float panX = 0.0f;
    float panY = 0.0f;
};
