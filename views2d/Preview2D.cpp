#include "Preview2D.h"

#include "Image.h"
#include "LogMessage.h"
#include "TextureUpload.h"

#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QOpenGLContext>
#include <QOpenGLFunctions_2_1>
#include <QWheelEvent>

Preview2D::Preview2D(QWidget* parent)
    : QOpenGLWidget(parent)
    , caption(new QLabel(this))
{
    caption->setGeometry(6, 6, 100, 20);
    caption->setAttribute(Qt::WA_TranslucentBackground);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(120, 90);
}

Preview2D::~Preview2D()
{
    // The context outlives this part of the object: no release from its signal.
    if (context())
        disconnect(context(), nullptr, this, nullptr);
    if (!ready)
        return;
    makeCurrent();
    releaseGL();
    doneCurrent();
}

void Preview2D::setLabelText(const QString& text)
{
    caption->setText(text);
}

void Preview2D::setImage(const Image* image)
{
    shownImage = image;
    if (ready) {
        makeCurrent();
        uploadImage();
        doneCurrent();
    } else {
        uploadPending = true;
    }
    update();
}

void Preview2D::setNormalise(bool on)
{
    if (on == normaliseValues)
        return;
    normaliseValues = on;
    setImage(shownImage);
}

void Preview2D::setTransform(const ViewTransform& transform)
{
    view = transform;
    update();
}

QPointF Preview2D::textureAt(QPointF widgetPosition) const
{
    const float imageAspect =
        shownImage && shownImage->height > 0 ? float(shownImage->width) / float(shownImage->height) : 1.0f;
    return view.screenToTexture(widgetPosition, size(), imageAspect);
}

void Preview2D::zoomToFit()
{
    if (!shownImage)
        return;
    view.fit(width(), height(), int(shownImage->width), int(shownImage->height));
    update();
}

void Preview2D::zoomOneToOne()
{
    if (!shownImage)
        return;
    view.oneToOne(height(), int(shownImage->height));
    update();
}

void Preview2D::mousePressEvent(QMouseEvent* event)
{
    switch (event->button()) {
    case Qt::LeftButton:
        leftButtonDown = true;
        break;
    case Qt::RightButton:
        QApplication::setOverrideCursor(Qt::SizeAllCursor);
        zoomDragActive = true;
        break;
    case Qt::MiddleButton:
        QApplication::setOverrideCursor(Qt::ClosedHandCursor);
        panDragActive = true;
        break;
    default:
        break;
    }
    lastX = event->x();
    lastY = event->y();
}

void Preview2D::mouseReleaseEvent(QMouseEvent* event)
{
    QApplication::restoreOverrideCursor();
    switch (event->button()) {
    case Qt::LeftButton: leftButtonDown = false; break;
    case Qt::RightButton: zoomDragActive = false; break;
    case Qt::MiddleButton: panDragActive = false; break;
    default: break;
    }
}

void Preview2D::mouseMoveEvent(QMouseEvent* event)
{
    const int dx = event->x() - lastX;
    const int dy = event->y() - lastY;
    if (zoomDragActive)
        view.dragZoom(dx);
    else if (panDragActive)
        view.dragPan(dx, dy, height());
    lastX = event->x();
    lastY = event->y();
    emit hovered(textureAt(event->localPos()));
    update();
}

void Preview2D::wheelEvent(QWheelEvent* event)
{
    view.wheel(event->angleDelta().y());
    update();
}

void Preview2D::enterEvent(QEvent*)
{
    if (panDragActive)
        QApplication::setOverrideCursor(Qt::ClosedHandCursor);
    if (zoomDragActive)
        QApplication::setOverrideCursor(Qt::SizeAllCursor);
}

void Preview2D::leaveEvent(QEvent*)
{
    QApplication::restoreOverrideCursor();
    emit cursorLeft();
}

void Preview2D::initializeGL()
{
    initializeOpenGLFunctions();
    legacy = context()->versionFunctions<QOpenGLFunctions_2_1>();
    if (legacy)
        legacy->initializeOpenGLFunctions();
    else
        logMessage(Error, QStringLiteral("The 2D view needs an OpenGL 2.1 compatibility context."));
    // Docking elsewhere recreates the context: everything is made again then.
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, [this] {
        makeCurrent();
        releaseGL();
        doneCurrent();
    });

    auto makeTexture = [this](GLuint& name) {
        glGenTextures(1, &name);
        glBindTexture(GL_TEXTURE_2D, name);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    };
    makeTexture(blankTexture);
    const unsigned char white[4] = {255, 255, 255, 255};
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, white);
    makeTexture(imageTexture);
    ready = true;
    // A new context has no pixels yet, whatever was shown before.
    if (shownImage || uploadPending)
        uploadImage();
    uploadPending = false;
}

void Preview2D::releaseGL()
{
    if (!ready)
        return;
    glDeleteTextures(1, &imageTexture);
    glDeleteTextures(1, &blankTexture);
    imageTexture = blankTexture = 0;
    legacy = nullptr;
    ready = false;
}

void Preview2D::uploadImage()
{
    imageUploaded = false;
    if (!shownImage)
        return;
    const TextureUpload upload = textureUploadOf(*shownImage, normaliseValues);
    if (!upload.pixels)
        return;
    GLint maximum = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maximum);
    if (shownImage->width > uint32_t(maximum) || shownImage->height > uint32_t(maximum)) {
        logMessage(Warning, "The image of %u x %u pixels is larger than this graphics driver can show (%i).",
                   shownImage->width, shownImage->height, maximum);
        return;
    }
    glBindTexture(GL_TEXTURE_2D, imageTexture);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexImage2D(GL_TEXTURE_2D, 0, GLint(upload.internalFormat), GLsizei(shownImage->width),
                 GLsizei(shownImage->height), 0, upload.sourceFormat, GL_FLOAT, upload.pixels);
    imageUploaded = true;
}

void Preview2D::paintGL()
{
    glViewport(0, 0, GLsizei(width() * devicePixelRatioF()), GLsizei(height() * devicePixelRatioF()));
    const float viewAspect = height() > 0 ? float(width()) / float(height()) : 1.0f;
    glClearColor(0.37f, 0.37f, 0.37f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    aspect = shownImage && shownImage->height > 0 ? float(shownImage->width) / float(shownImage->height) : 1.0f;
    if (!legacy)
        return;

    legacy->glMatrixMode(GL_PROJECTION);
    legacy->glLoadIdentity();
    legacy->glOrtho(-viewAspect, viewAspect, -1.0, 1.0, -1.0, 1.0);
    legacy->glMatrixMode(GL_MODELVIEW);
    legacy->glLoadIdentity();
    legacy->glTranslatef(view.panX, view.panY, 0.0f);
    legacy->glScalef(view.zoom, view.zoom, 1.0f);
    legacy->glScalef(aspect, 1.0f, 1.0f);

    // GL hands matrices over column by column; QMatrix4x4 takes rows.
    float values[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, values);
    modelView = QMatrix4x4(values).transposed();
    glGetFloatv(GL_PROJECTION_MATRIX, values);
    projection = QMatrix4x4(values).transposed();
    combined = projection * modelView;

    if (!drawImage)
        return;
    glBindTexture(GL_TEXTURE_2D, shownImage && imageUploaded ? imageTexture : blankTexture);
    legacy->glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    glEnable(GL_TEXTURE_2D);
    legacy->glBegin(GL_QUADS);
    legacy->glTexCoord2f(0.0f, 0.0f);
    legacy->glVertex2f(-1.0f, -1.0f);
    legacy->glTexCoord2f(1.0f, 0.0f);
    legacy->glVertex2f(1.0f, -1.0f);
    legacy->glTexCoord2f(1.0f, 1.0f);
    legacy->glVertex2f(1.0f, 1.0f);
    legacy->glTexCoord2f(0.0f, 1.0f);
    legacy->glVertex2f(-1.0f, 1.0f);
    legacy->glEnd();
    glDisable(GL_TEXTURE_2D);
}
