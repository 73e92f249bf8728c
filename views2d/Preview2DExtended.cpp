#include "Preview2DExtended.h"

#include "Image.h"
#include "MeshVertex.h"
#include "ShaderProgram.h"
#include "tools/PaintTool.h"

#include <QMouseEvent>
#include <QOpenGLShaderProgram>
#include <QOpenGLTexture>

#include <cmath>
#include <vector>

// Resources of a static library are registered by hand, outside any namespace.
static void initShaderResources()
{
    Q_INIT_RESOURCE(shaders);
}

namespace {

const int outlineSegments = 64;

// Points at the centres of an n x n grid over the texture, as x, y pairs.
std::vector<float> gridPoints(int n)
{
    std::vector<float> points;
    points.reserve(size_t(n) * n * 2);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            points.push_back((float(i) + 0.5f) / float(n));
            points.push_back((float(j) + 0.5f) / float(n));
        }
    return points;
}

QOpenGLShaderProgram* program(const char* vertex, const char* fragment, const char* geometry = nullptr)
{
    auto source = [](const char* name) { return loadShaderSource(QStringLiteral(":/shaders/") + name); };
    return buildShaderProgram(source(vertex), source(fragment), geometry ? source(geometry) : QString());
}

} // namespace

Preview2DExtended::Preview2DExtended(QWidget* parent)
    : Preview2D(parent)
{
    initShaderResources();
}

Preview2DExtended::~Preview2DExtended()
{
    // The context outlives this part of the object: no release from its signal.
    if (context())
        disconnect(context(), nullptr, this, nullptr);
    if (!glReady())
        return;
    makeCurrent();
    releaseGL();
    doneCurrent();
}

void Preview2DExtended::setTool(PaintTool* tool)
{
    if (tool == activeTool)
        return;
    if (activeTool && strokeActive)
        activeTool->release();
    strokeActive = false;
    activeTool = tool;
    update();
}

void Preview2DExtended::setMaskImage(const Image* image)
{
    setOverlayImage(MaskOverlay, image);
}

void Preview2DExtended::setDirectionMap(const Image* image)
{
    setOverlayImage(DirectionOverlay, image);
}

void Preview2DExtended::setScaleMap(const Image* image)
{
    setOverlayImage(ScaleOverlay, image);
}

void Preview2DExtended::setMaskVisible(bool on)
{
    overlayVisible[MaskOverlay] = on;
    update();
}

void Preview2DExtended::setDirectionsVisible(bool on)
{
    overlayVisible[DirectionOverlay] = on;
    update();
}

void Preview2DExtended::setScalesVisible(bool on)
{
    overlayVisible[ScaleOverlay] = on;
    update();
}

void Preview2DExtended::setOverlayImage(Overlay overlay, const Image* image)
{
    overlayImages[overlay] = image;
    if (glReady()) {
        makeCurrent();
        uploadOverlay(overlay);
        doneCurrent();
    } else {
        overlayPending[overlay] = true;
    }
    update();
}

void Preview2DExtended::uploadOverlay(Overlay overlay)
{
    overlayTextures[overlay].reset();
    overlayPending[overlay] = false;
    const Image* image = overlayImages[overlay];
    if (!image || image->isEmpty())
        return;
    // Float textures: direction vectors keep their sign.
    QOpenGLTexture::TextureFormat format = QOpenGLTexture::RGB32F;
    QOpenGLTexture::PixelFormat source = QOpenGLTexture::RGB;
    switch (image->format) {
    case Gray:
        format = QOpenGLTexture::R32F;
        source = QOpenGLTexture::Red;
        break;
    case RGB:
    case Normal: break;
    case RGBA:
        format = QOpenGLTexture::RGBA32F;
        source = QOpenGLTexture::RGBA;
        break;
    default: return;
    }
    auto texture = std::make_unique<QOpenGLTexture>(QOpenGLTexture::Target2D);
    texture->setSize(int(image->width), int(image->height));
    texture->setFormat(format);
    texture->allocateStorage(source, QOpenGLTexture::Float32);
    texture->setData(source, QOpenGLTexture::Float32, static_cast<const void*>(image->data));
    texture->setMinMagFilters(QOpenGLTexture::Nearest, QOpenGLTexture::Nearest);
    texture->setWrapMode(QOpenGLTexture::ClampToEdge);
    overlayTextures[overlay] = std::move(texture);
}

void Preview2DExtended::mousePressEvent(QMouseEvent* event)
{
    Preview2D::mousePressEvent(event);
    if (event->button() == Qt::LeftButton && activeTool && !strokeActive) {
        strokeActive = true;
        activeTool->press(textureAt(event->localPos()));
    }
}

void Preview2DExtended::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && strokeActive) {
        strokeActive = false;
        if (activeTool)
            activeTool->release();
    }
    Preview2D::mouseReleaseEvent(event);
}

void Preview2DExtended::mouseMoveEvent(QMouseEvent* event)
{
    Preview2D::mouseMoveEvent(event);
    cursor = textureAt(event->localPos());
    cursorInside = true;
    if (strokeActive && activeTool)
        activeTool->move(cursor);
}

void Preview2DExtended::leaveEvent(QEvent* event)
{
    cursorInside = false;
    update();
    Preview2D::leaveEvent(event);
}

void Preview2DExtended::initializeGL()
{
    Preview2D::initializeGL();
    maskProgram.reset(program("overlay_mask.vert", "overlay_mask.frag"));
    arrowProgram.reset(program("overlay_points.vert", "overlay_arrows.frag", "overlay_arrows.geom"));
    circleProgram.reset(program("overlay_points.vert", "overlay_circles.frag", "overlay_circles.geom"));
    whiteProgram.reset(program("overlay_white.vert", "overlay_white.frag"));
    for (int overlay = 0; overlay < OverlayCount; ++overlay)
        uploadOverlay(Overlay(overlay));
}

void Preview2DExtended::releaseGL()
{
    if (!glReady())
        return;
    for (auto& texture : overlayTextures)
        texture.reset();
    maskProgram.reset();
    arrowProgram.reset();
    circleProgram.reset();
    whiteProgram.reset();
    Preview2D::releaseGL();
}

QMatrix4x4 Preview2DExtended::shaderMatrix() const
{
    return combinedMatrix().transposed();
}

void Preview2DExtended::paintGL()
{
    Preview2D::paintGL();
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    if (overlayVisible[MaskOverlay])
        drawMask();
    if (overlayVisible[DirectionOverlay])
        drawPointOverlay(DirectionOverlay, arrowProgram.get(), "dirMap");
    if (overlayVisible[ScaleOverlay])
        drawPointOverlay(ScaleOverlay, circleProgram.get(), "scaleMap");
    drawOutline();
    glDisable(GL_BLEND);
}

void Preview2DExtended::drawMask()
{
    QOpenGLTexture* texture = overlayTextures[MaskOverlay].get();
    if (!texture || !maskProgram || !maskProgram->isLinked())
        return;
    static const float quad[] = {-1.0f, -1.0f, 1.0f, -1.0f, 1.0f, 1.0f, -1.0f, 1.0f};
    maskProgram->bind();
    texture->bind(0);
    maskProgram->setUniformValue("maskImage", 0);
    maskProgram->setUniformValue("MVP", shaderMatrix());
    maskProgram->enableAttributeArray(VertexAttribute);
    maskProgram->setAttributeArray(VertexAttribute, quad, 2);
    glDrawArrays(GL_TRIANGLE_FAN, 0, 4);
    maskProgram->disableAttributeArray(VertexAttribute);
    texture->release(0);
    maskProgram->release();
}

void Preview2DExtended::drawPointOverlay(Overlay overlay, QOpenGLShaderProgram* points, const char* sampler)
{
    QOpenGLTexture* texture = overlayTextures[overlay].get();
    if (!texture || !points || !points->isLinked())
        return;
    static const std::vector<float> grid = gridPoints(overlayGridSize);
    points->bind();
    texture->bind(0);
    points->setUniformValue(sampler, 0);
    points->setUniformValue("MVP", shaderMatrix());
    points->setUniformValue("scaler", overlayScaler);
    points->enableAttributeArray(VertexAttribute);
    points->setAttributeArray(VertexAttribute, grid.data(), 2);
    glDrawArrays(GL_POINTS, 0, overlayGridSize * overlayGridSize);
    points->disableAttributeArray(VertexAttribute);
    texture->release(0);
    points->release();
}

void Preview2DExtended::drawOutline()
{
    const double radius = activeTool ? activeTool->outlineRadius() : 0.0;
    if (!cursorInside || !(radius > 0.0) || !whiteProgram || !whiteProgram->isLinked())
        return;
    // The radius is in image widths: 2 quad units across in x, and the
    // image's aspect times that in y, so the outline is round on screen.
    const float centreX = float(cursor.x()) * 2.0f - 1.0f;
    const float centreY = float(cursor.y()) * 2.0f - 1.0f;
    const float radiusX = float(radius) * 2.0f;
    const float radiusY = radiusX * imageAspect();
    float circle[outlineSegments * 2];
    for (int i = 0; i < outlineSegments; ++i) {
        const float angle = float(i) * 6.2831853f / float(outlineSegments);
        circle[i * 2] = centreX + std::cos(angle) * radiusX;
        circle[i * 2 + 1] = centreY + std::sin(angle) * radiusY;
    }
    whiteProgram->bind();
    whiteProgram->setUniformValue("MVP", shaderMatrix());
    whiteProgram->enableAttributeArray(VertexAttribute);
    whiteProgram->setAttributeArray(VertexAttribute, circle, 2);
    glDrawArrays(GL_LINE_LOOP, 0, outlineSegments);
    whiteProgram->disableAttributeArray(VertexAttribute);
    whiteProgram->release();
}
