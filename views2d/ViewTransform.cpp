#include "ViewTransform.h"

#include <algorithm>
#include <cmath>

void ViewTransform::dragZoom(int dx)
{
    zoom = std::max(zoom + float(dx) / 100.0f, minimumZoom);
}

void ViewTransform::dragPan(int dx, int dy, int viewHeight)
{
    if (viewHeight <= 0)
        return;
    const float root = std::sqrt(zoom);
    panX += (2.0f * float(dx) / float(viewHeight)) / root;
    panY -= (2.0f * float(dy) / float(viewHeight)) / root;
}

void ViewTransform::wheel(int delta)
{
    zoom = std::max(zoom + float(delta) * 0.0003f, minimumZoom);
}

void ViewTransform::fit(int viewWidth, int viewHeight, int imageWidth, int imageHeight)
{
    if (viewWidth <= 0 || viewHeight <= 0 || imageWidth <= 0 || imageHeight <= 0)
        return;
    panX = 0.0f;
    panY = 0.0f;
    // Double precision so that exact quotients (400 / 2.0) do not truncate
    // one short.
    const double k = std::trunc(double(viewWidth) / (double(imageWidth) / double(imageHeight)));
    zoom = k > viewHeight ? 1.0f : float(k / viewHeight);
    zoom = std::max(zoom, minimumZoom);
}

void ViewTransform::oneToOne(int viewHeight, int imageHeight)
{
    if (viewHeight <= 0 || imageHeight <= 0)
        return;
    zoom = float(imageHeight) / float(viewHeight);
}

QMatrix4x4 ViewTransform::projection(QSize view) const
{
    const float aspect = view.height() > 0 ? float(view.width()) / float(view.height()) : 1.0f;
    QMatrix4x4 matrix;
    matrix.ortho(-aspect, aspect, -1.0f, 1.0f, -1.0f, 1.0f);
    return matrix;
}

QMatrix4x4 ViewTransform::modelView(float imageAspect) const
{
    QMatrix4x4 matrix;
    matrix.translate(panX, panY, 0.0f);
    matrix.scale(zoom, zoom, 1.0f);
    matrix.scale(imageAspect, 1.0f, 1.0f);
    return matrix;
}

QPointF ViewTransform::screenToTexture(QPointF screen, QSize view, float imageAspect) const
{
    if (view.width() <= 0 || view.height() <= 0 || imageAspect <= 0.0f)
        return QPointF();
    const double aspect = double(view.width()) / view.height();
    const double x = (2.0 * screen.x() / view.width() - 1.0) * aspect;
    const double y = 1.0 - 2.0 * screen.y() / view.height();
    const double quadX = (x - panX) / (double(zoom) * imageAspect);
    const double quadY = (y - panY) / double(zoom);
    return QPointF(quadX * 0.5 + 0.5, quadY * 0.5 + 0.5);
}

QPointF ViewTransform::textureToScreen(QPointF texture, QSize view, float imageAspect) const
{
    if (view.width() <= 0 || view.height() <= 0)
        return QPointF();
    const double aspect = double(view.width()) / view.height();
    const double x = (texture.x() * 2.0 - 1.0) * zoom * imageAspect + panX;
    const double y = (texture.y() * 2.0 - 1.0) * zoom + panY;
    return QPointF((x / aspect + 1.0) * 0.5 * view.width(), (1.0 - y) * 0.5 * view.height());
}
