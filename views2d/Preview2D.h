#pragma once

#include "ViewTransform.h"

#include <QMatrix4x4>
#include <QOpenGLFunctions>
#include <QOpenGLWidget>

class Image;
class QLabel;
class QOpenGLFunctions_2_1;

// An OpenGL view of one Image as a flat picture: right-drag zooms,
// middle-drag pans, the wheel zooms; zoomToFit and zoomOneToOne reset the
// view. The image is not copied: the caller keeps it alive and calls
// setImage again after changing its pixels. Draws with the fixed-function
// pipeline of the application's compatibility context.
class Preview2D : public QOpenGLWidget, protected QOpenGLFunctions
{
    Q_OBJECT
public:
    explicit Preview2D(QWidget* parent = nullptr);
    ~Preview2D() override;

    void setLabelText(const QString& text);
    // Null shows a white square. Uploads the pixels and repaints.
    void setImage(const Image* image);
    const Image* image() const { return shownImage; }
    // Stretches colour values to 0..1 before the upload (see TextureUpload).
    void setNormalise(bool on);
    bool normalise() const { return normaliseValues; }

    const ViewTransform& transform() const { return view; }
    void setTransform(const ViewTransform& transform);
    // Projection x model-view of the last paint.
    QMatrix4x4 combinedMatrix() const { return combined; }
    float imageAspect() const { return aspect; }
    // Texture coordinates of the image under a widget position.
    QPointF textureAt(QPointF widgetPosition) const;

public slots:
    void zoomToFit();
    void zoomOneToOne();

signals:
    // The cursor moved over the view; texture coordinates of the image.
    void hovered(QPointF texture);
    void cursorLeft();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void initializeGL() override;
    void paintGL() override;

    // Frees the textures; the subclass frees its own objects first.
    virtual void releaseGL();
    QOpenGLFunctions_2_1* fixedFunctions() const { return legacy; }
    bool glReady() const { return ready; }

    bool leftButtonDown = false;
    // When false paintGL only clears and sets the matrices.
    bool drawImage = true;

private:
    void uploadImage();

    GLuint imageTexture = 0;
    GLuint blankTexture = 0;
    const Image* shownImage = nullptr;
    QLabel* caption = nullptr;
    int lastX = 0;
    int lastY = 0;
    bool zoomDragActive = false;
    bool panDragActive = false;
    ViewTransform view;
    float aspect = 1.0f;
    QMatrix4x4 modelView;
    QMatrix4x4 projection;
    QMatrix4x4 combined;

    QOpenGLFunctions_2_1* legacy = nullptr;
    bool ready = false;
    bool normaliseValues = false;
    // An image set while the texture could not take it yet.
    bool uploadPending = false;
    // False while the shown image has no pixels in the texture (no image,
    // format None, too large): the blank texture stands in.
    bool imageUploaded = false;
};
