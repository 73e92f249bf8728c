#pragma once

#include "Preview2D.h"

#include <memory>

class PaintTool;
class QOpenGLShaderProgram;
class QOpenGLTexture;

// The generated view: a Preview2D that forwards left-button strokes to the
// active painting tool, draws the tool's brush outline around the cursor,
// and draws three optional overlays over the picture: the output mask tinted
// violet, the direction map as arrows and the scale map as circles. The
// overlay images, like the picture, are not copied; set them again after
// their pixels change.
class Preview2DExtended : public Preview2D
{
    Q_OBJECT
public:
    // Arrows and circles sit on a grid of this many points per side of the
    // image, at the cell centres: at 16 an arrow (0.12 units long) just fits
    // its cell (0.125), so neighbours never overlap.
    static constexpr int overlayGridSize = 16;
    // Size of the arrows and circles (the geometry shaders' "scaler").
    static constexpr float overlayScaler = 1.0f;

    explicit Preview2DExtended(QWidget* parent = nullptr);
    ~Preview2DExtended() override;

    // Null: no painting. The view does not own the tool. A stroke in progress
    // on the previous tool is ended first.
    void setTool(PaintTool* tool);
    PaintTool* tool() const { return activeTool; }

    void setMaskImage(const Image* image);
    void setDirectionMap(const Image* image);
    void setScaleMap(const Image* image);
    void setMaskVisible(bool on);
    void setDirectionsVisible(bool on);
    void setScalesVisible(bool on);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void initializeGL() override;
    void paintGL() override;
    void releaseGL() override;

private:
    enum Overlay
    {
        MaskOverlay,
        DirectionOverlay,
        ScaleOverlay,
        OverlayCount
    };

    void setOverlayImage(Overlay overlay, const Image* image);
    void uploadOverlay(Overlay overlay);
    void drawMask();
    void drawPointOverlay(Overlay overlay, QOpenGLShaderProgram* program, const char* sampler);
    void drawOutline();
    // Combined matrix for the shaders, which multiply row vectors (vertex x MVP).
    QMatrix4x4 shaderMatrix() const;

    PaintTool* activeTool = nullptr;
    bool strokeActive = false;
    // Where the cursor is, in texture coordinates; no outline while outside.
    QPointF cursor;
    bool cursorInside = false;

    const Image* overlayImages[OverlayCount] = {};
    bool overlayVisible[OverlayCount] = {};
    bool overlayPending[OverlayCount] = {};
    std::unique_ptr<QOpenGLTexture> overlayTextures[OverlayCount];

    std::unique_ptr<QOpenGLShaderProgram> maskProgram;
    std::unique_ptr<QOpenGLShaderProgram> arrowProgram;
    std::unique_ptr<QOpenGLShaderProgram> circleProgram;
    std::unique_ptr<QOpenGLShaderProgram> whiteProgram;
};
