#include "ViewTransform.h"

#include <gtest/gtest.h>

TEST(ViewTransformTest, FitTruncatesAndNeverGrowsTallerThanTheView)
{
    ViewTransform view;
    view.panX = 0.3f;
    view.panY = -0.2f;
    view.fit(400, 400, 200, 100); // 2:1
    EXPECT_FLOAT_EQ(view.zoom, 0.5f);
    EXPECT_EQ(view.panX, 0.0f);
    EXPECT_EQ(view.panY, 0.0f);

    view.fit(400, 400, 100, 200); // 1:2: k = 800 > 400
    EXPECT_FLOAT_EQ(view.zoom, 1.0f);

    // k is truncated: 401 / 3 = 133.67 gives 133.
    view.fit(401, 300, 300, 100);
    EXPECT_FLOAT_EQ(view.zoom, 133.0f / 300.0f);

    // Empty sizes change nothing.
    view.zoom = 2.0f;
    view.fit(400, 400, 0, 100);
    view.fit(0, 400, 100, 100);
    EXPECT_FLOAT_EQ(view.zoom, 2.0f);
}

TEST(ViewTransformTest, OneToOneKeepsThePan)
{
    ViewTransform view;
    view.panX = 0.25f;
    view.oneToOne(400, 1000);
    EXPECT_FLOAT_EQ(view.zoom, 2.5f);
    EXPECT_FLOAT_EQ(view.panX, 0.25f);
    // One image pixel is one screen pixel: 1000 rows cover 1000 screen pixels.
    const QSize size(500, 400);
    const QPointF a = view.textureToScreen(QPointF(0.5, 0.0), size, 1.0f);
    const QPointF b = view.textureToScreen(QPointF(0.5, 1.0), size, 1.0f);
    EXPECT_NEAR(a.y() - b.y(), 1000.0, 1e-3);
}

TEST(ViewTransformTest, DragAndWheelZoomStopAtTheMinimum)
{
    ViewTransform view;
    view.dragZoom(50);
    EXPECT_FLOAT_EQ(view.zoom, 1.5f);
    view.dragZoom(-1000);
    EXPECT_FLOAT_EQ(view.zoom, ViewTransform::minimumZoom);

    view.zoom = 1.0f;
    view.wheel(120);
    EXPECT_NEAR(view.zoom, 1.036f, 1e-6);
    view.wheel(-120 * 100);
    EXPECT_FLOAT_EQ(view.zoom, ViewTransform::minimumZoom);
}

TEST(ViewTransformTest, PanDividesByTheSquareRootOfTheZoom)
{
    ViewTransform view;
    view.zoom = 4.0f;
    view.dragPan(100, 50, 200);
    // 2 * 100 / 200 = 1, over sqrt(4) = 0.5; y goes up as the pointer goes down.
    EXPECT_FLOAT_EQ(view.panX, 0.5f);
    EXPECT_FLOAT_EQ(view.panY, -0.25f);
    view.dragPan(10, 10, 0); // no height: no change, no division by zero
    EXPECT_FLOAT_EQ(view.panX, 0.5f);
}

TEST(ViewTransformTest, ScreenAndTextureCoordinatesRoundTrip)
{
    const QSize size(300, 200);
    ViewTransform view;
    // Zoom 1, no pan: a square image spans the middle 200 x 200 pixels,
    // v running up from the bottom row.
    QPointF t = view.screenToTexture(QPointF(50, 200), size, 1.0f);
    EXPECT_NEAR(t.x(), 0.0, 1e-9);
    EXPECT_NEAR(t.y(), 0.0, 1e-9);
    t = view.screenToTexture(QPointF(250, 0), size, 1.0f);
    EXPECT_NEAR(t.x(), 1.0, 1e-9);
    EXPECT_NEAR(t.y(), 1.0, 1e-9);
    t = view.screenToTexture(QPointF(100, 150), size, 1.0f);
    EXPECT_NEAR(t.x(), 0.25, 1e-9);
    EXPECT_NEAR(t.y(), 0.25, 1e-9);

    view.zoom = 0.37f;
    view.panX = 0.4f;
    view.panY = -0.7f;
    for (float aspect : {0.5f, 1.0f, 3.0f})
        for (QPointF p : {QPointF(0, 0), QPointF(17.5, 133), QPointF(299, 1), QPointF(-40, 250)}) {
            const QPointF back = view.textureToScreen(view.screenToTexture(p, size, aspect), size, aspect);
            EXPECT_NEAR(back.x(), p.x(), 1e-6);
            EXPECT_NEAR(back.y(), p.y(), 1e-6);
        }

    // The screen mapping agrees with the matrices the view draws with.
    const QPointF uv(0.8, 0.3);
    const QVector3D clip = view.combined(size, 2.0f).map(QVector3D(float(uv.x() * 2 - 1), float(uv.y() * 2 - 1), 0));
    const QPointF screen = view.textureToScreen(uv, size, 2.0f);
    EXPECT_NEAR((clip.x() + 1) * 0.5 * size.width(), screen.x(), 1e-3);
    EXPECT_NEAR((1 - clip.y()) * 0.5 * size.height(), screen.y(), 1e-3);
}
