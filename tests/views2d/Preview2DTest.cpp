#include "Image.h"
#include "../ErrorCapture.h"
#include "MessageHandler.h"
#include "Preview2DExtended.h"
#include "tools/PaintTool.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>
#include <QSurfaceFormat>
#include <QTest>

#include <cmath>

namespace {

Image constant(uint32_t width, uint32_t height, PixelFormat format, std::initializer_list<float> values)
{
    Image image(width, height, format);
    const std::vector<float> v(values);
    for (uint64_t i = 0; i < image.floatCount(); ++i)
        image.data[i] = v[i % v.size()];
    return image;
}

// True when the pixel is within 2 of the expected 0..255 values.
::testing::AssertionResult hasColour(const QImage& frame, QPointF at, int r, int g, int b)
{
    const QPoint p(int(std::floor(at.x())), int(std::floor(at.y())));
    if (!frame.rect().contains(p))
        return ::testing::AssertionFailure() << "pixel " << p.x() << "," << p.y() << " is outside the frame";
    const QRgb c = frame.pixel(p);
    if (std::abs(qRed(c) - r) <= 2 && std::abs(qGreen(c) - g) <= 2 && std::abs(qBlue(c) - b) <= 2)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "pixel " << p.x() << "," << p.y() << " is (" << qRed(c) << ", "
                                         << qGreen(c) << ", " << qBlue(c) << "), expected (" << r << ", " << g
                                         << ", " << b << ")";
}

void sendMouse(QWidget* widget, QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons held)
{
    QMouseEvent event(type, at, widget->mapToGlobal(at), button, held, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

// Records what the view hands to the active tool.
class RecordingTool : public PaintTool
{
public:
    void press(QPointF uv) override { events.push_back({'p', uv}); }
    void move(QPointF uv) override { events.push_back({'m', uv}); }
    void release() override { events.push_back({'r', QPointF()}); }
    double outlineRadius() const override { return radius; }

    std::vector<std::pair<char, QPointF>> events;
    double radius = 0.0;
};

class Preview2DTest : public ::testing::Test
{
protected:
    void TearDown() override { EXPECT_TRUE(errorLog.empty()) << errorLog.text(); }

    void showView(Preview2D& view, int width, int height)
    {
        view.resize(width, height);
        view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    }

    ErrorCapture errorLog;
};

const int grey = 94; // 0.37 of 255

TEST_F(Preview2DTest, WithoutImageAWhiteSquareAsTallAsTheView)
{
    Preview2D view;
    showView(view, 200, 100);
    const QImage frame = view.grabFramebuffer();
    ASSERT_EQ(frame.size(), QSize(200, 100));
    EXPECT_TRUE(hasColour(frame, {100, 50}, 255, 255, 255));
    EXPECT_TRUE(hasColour(frame, {51, 1}, 255, 255, 255));
    EXPECT_TRUE(hasColour(frame, {148, 98}, 255, 255, 255));
    EXPECT_TRUE(hasColour(frame, {47, 50}, grey, grey, grey));
    EXPECT_TRUE(hasColour(frame, {153, 50}, grey, grey, grey));
    // The matrices read back from GL are the view math's.
    EXPECT_TRUE(qFuzzyCompare(view.combinedMatrix(), view.transform().combined(view.size(), 1.0f)));
    // The fit and 1:1 buttons do nothing without an image.
    view.zoomToFit();
    view.zoomOneToOne();
    EXPECT_EQ(view.transform().zoom, 1.0f);
}

TEST_F(Preview2DTest, UploadTableShowsEachFormat)
{
    Preview2D view;
    showView(view, 100, 100);

    struct Case
    {
        Image image;
        int r, g, b;
    };
    Image normal = constant(2, 2, Normal, {0.2f, 0.4f, 0.8f});
    normal.flipNormalY = true;
    normal.mappedNormalXY = true;
    Case cases[] = {
        {constant(2, 2, Gray, {0.25f}), 64, 64, 64},
        {constant(2, 2, RGB, {1.0f, 0.5f, 0.0f}), 255, 128, 0},
        {constant(2, 2, RGBA, {0.0f, 0.25f, 1.0f, 0.5f}), 0, 64, 255},
        // Y negated before the offset: 0.6, 0.3, 0.8.
        {normal, 153, 77, 204},
        // Out-of-range floats are clamped.
        {constant(2, 2, RGB, {4.0f, -1.0f, 0.5f}), 255, 0, 128},
    };
    for (const Case& c : cases) {
        view.setImage(&c.image);
        EXPECT_TRUE(hasColour(view.grabFramebuffer(), {50, 50}, c.r, c.g, c.b)) << "format " << c.image.format;
    }

    // Row 0 is at the bottom: a red bottom row and a blue top row.
    Image rows(1, 2, RGB);
    rows.data[0] = 1.0f;
    rows.data[5] = 1.0f;
    view.setImage(&rows);
    view.zoomToFit();
    QImage frame = view.grabFramebuffer();
    EXPECT_TRUE(hasColour(frame, {50, 90}, 255, 0, 0));
    EXPECT_TRUE(hasColour(frame, {50, 10}, 0, 0, 255));

    // Normalising stretches an HDR image over the full range.
    Image hdr(2, 1, Gray);
    hdr.data[0] = 2.0f;
    hdr.data[1] = 6.0f;
    view.setImage(&hdr);
    view.setNormalise(true);
    view.zoomToFit();
    frame = view.grabFramebuffer();
    EXPECT_TRUE(hasColour(frame, {25, 50}, 0, 0, 0));
    EXPECT_TRUE(hasColour(frame, {75, 50}, 255, 255, 255));
}

TEST_F(Preview2DTest, MouseZoomsAndPansTheView)
{
    Preview2D view;
    showView(view, 400, 400);
    Image wide = constant(200, 100, Gray, {0.5f});
    view.setImage(&wide);
    view.zoomToFit();
    EXPECT_FLOAT_EQ(view.transform().zoom, 0.5f);
    view.zoomOneToOne();
    EXPECT_FLOAT_EQ(view.transform().zoom, 0.25f);

    // Right drag 50 pixels to the right: +0.5.
    sendMouse(&view, QEvent::MouseButtonPress, {100, 100}, Qt::RightButton, Qt::RightButton);
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::SizeAllCursor);
    sendMouse(&view, QEvent::MouseMove, {150, 100}, Qt::NoButton, Qt::RightButton);
    EXPECT_FLOAT_EQ(view.transform().zoom, 0.75f);
    sendMouse(&view, QEvent::MouseMove, {-2000, 100}, Qt::NoButton, Qt::RightButton);
    EXPECT_FLOAT_EQ(view.transform().zoom, ViewTransform::minimumZoom);
    sendMouse(&view, QEvent::MouseButtonRelease, {-2000, 100}, Qt::RightButton, Qt::NoButton);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);

    // Middle drag at zoom 4: 40 pixels of 400 is 0.2 units, halved.
    ViewTransform zoomed;
    zoomed.zoom = 4.0f;
    view.setTransform(zoomed);
    sendMouse(&view, QEvent::MouseButtonPress, {100, 100}, Qt::MiddleButton, Qt::MiddleButton);
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::ClosedHandCursor);
    sendMouse(&view, QEvent::MouseMove, {140, 120}, Qt::NoButton, Qt::MiddleButton);
    sendMouse(&view, QEvent::MouseButtonRelease, {140, 120}, Qt::MiddleButton, Qt::NoButton);
    EXPECT_FLOAT_EQ(view.transform().panX, 0.1f);
    EXPECT_FLOAT_EQ(view.transform().panY, -0.05f);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);

    QWheelEvent wheel(QPointF(100, 100), view.mapToGlobal(QPoint(100, 100)), QPoint(), QPoint(0, 120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&view, &wheel);
    EXPECT_NEAR(view.transform().zoom, 4.036f, 1e-5);
}

TEST_F(Preview2DTest, MaskOverlayTintsInsideLightlyAndOutsideStrongly)
{
    Preview2DExtended view;
    showView(view, 100, 100);
    Image black = constant(4, 4, RGB, {0.0f, 0.0f, 0.0f});
    Image mask(4, 4, Gray);
    for (uint32_t y = 0; y < 4; ++y)
        mask.data[y * 4] = mask.data[y * 4 + 1] = 1.0f; // left half in
    view.setImage(&black);
    view.setMaskImage(&mask);
    EXPECT_TRUE(hasColour(view.grabFramebuffer(), {25, 50}, 0, 0, 0)); // hidden by default
    view.setMaskVisible(true);
    const QImage frame = view.grabFramebuffer();
    EXPECT_TRUE(hasColour(frame, {25, 50}, 32, 0, 64));
    EXPECT_TRUE(hasColour(frame, {75, 50}, 96, 0, 191));
}

TEST_F(Preview2DTest, ArrowsAndCirclesSitOnTheirGridPoints)
{
    Preview2DExtended view;
    showView(view, 240, 240);
    Image black = constant(8, 8, RGB, {0.0f, 0.0f, 0.0f});
    Image directions = constant(8, 8, Normal, {1.0f, 0.0f, 0.0f});
    Image scales = constant(8, 8, Gray, {1.0f});
    view.setImage(&black);
    view.setDirectionMap(&directions);
    view.setScaleMap(&scales);
    ViewTransform zoomed;
    zoomed.zoom = 4.0f; // one quad unit is 480 pixels
    view.setTransform(zoomed);

    const int n = Preview2DExtended::overlayGridSize;
    const QPointF point((n / 2 + 0.5) / n, (n / 2 + 0.5) / n);
    auto screen = [&](double du, double dv) {
        return view.transform().textureToScreen(point + QPointF(du, dv), view.size(), 1.0f);
    };

    view.setDirectionsVisible(true);
    QImage frame = view.grabFramebuffer();
    // The shaft runs 0.08 quad units (0.04 in u) to the right of the point.
    EXPECT_TRUE(hasColour(frame, screen(0.02, 0.0), 179, 204, 255));
    EXPECT_TRUE(hasColour(frame, screen(0.045, 0.0), 179, 204, 255)); // the head
    EXPECT_TRUE(hasColour(frame, screen(0.045, 0.008), 0, 0, 0)); // beside the head
    EXPECT_TRUE(hasColour(frame, screen(0.02, 0.01), 0, 0, 0));

    // A direction of +y points up the image, towards its last row.
    Image upwards = constant(8, 8, Normal, {0.0f, 1.0f, 0.0f});
    view.setDirectionMap(&upwards);
    frame = view.grabFramebuffer();
    EXPECT_TRUE(hasColour(frame, screen(0.0, 0.02), 179, 204, 255));
    EXPECT_TRUE(hasColour(frame, screen(0.0, 0.045), 179, 204, 255));
    EXPECT_TRUE(hasColour(frame, screen(0.02, 0.0), 0, 0, 0));

    view.setDirectionsVisible(false);
    view.setScalesVisible(true);
    frame = view.grabFramebuffer();
    // A ring from 0.03 to 0.038 quad units (0.015 to 0.019 in texture units).
    EXPECT_TRUE(hasColour(frame, screen(0.017, 0.0), 255, 107, 107));
    EXPECT_TRUE(hasColour(frame, screen(0.0, -0.017), 255, 107, 107));
    EXPECT_TRUE(hasColour(frame, screen(0.0, 0.0), 0, 0, 0));
    EXPECT_TRUE(hasColour(frame, screen(0.025, 0.0), 0, 0, 0));
}

TEST_F(Preview2DTest, StrokesReachTheToolInTextureCoordinates)
{
    Preview2DExtended view;
    showView(view, 200, 200);
    Image black = constant(64, 32, RGB, {0.0f, 0.0f, 0.0f});
    view.setImage(&black);
    view.zoomToFit(); // 2:1 in 200 x 200: zoom 0.5, the image spans 200 x 100
    RecordingTool tool;
    tool.radius = 0.1; // 20 pixels on screen

    // Without a tool a left click paints nothing.
    sendMouse(&view, QEvent::MouseButtonPress, {50, 50}, Qt::LeftButton, Qt::LeftButton);
    sendMouse(&view, QEvent::MouseButtonRelease, {50, 50}, Qt::LeftButton, Qt::NoButton);

    view.setTool(&tool);
    sendMouse(&view, QEvent::MouseButtonPress, {50, 125}, Qt::LeftButton, Qt::LeftButton);
    sendMouse(&view, QEvent::MouseMove, {150, 75}, Qt::NoButton, Qt::LeftButton);
    // Other buttons do not end the stroke.
    sendMouse(&view, QEvent::MouseButtonRelease, {150, 75}, Qt::RightButton, Qt::LeftButton);
    sendMouse(&view, QEvent::MouseButtonRelease, {150, 75}, Qt::LeftButton, Qt::NoButton);
    // Moving without the button pressed only moves the outline.
    sendMouse(&view, QEvent::MouseMove, {100, 100}, Qt::NoButton, Qt::NoButton);

    ASSERT_EQ(tool.events.size(), 3u);
    EXPECT_EQ(tool.events[0].first, 'p');
    EXPECT_NEAR(tool.events[0].second.x(), 0.25, 1e-6);
    EXPECT_NEAR(tool.events[0].second.y(), 0.25, 1e-6);
    EXPECT_EQ(tool.events[1].first, 'm');
    EXPECT_NEAR(tool.events[1].second.x(), 0.75, 1e-6);
    EXPECT_NEAR(tool.events[1].second.y(), 0.75, 1e-6);
    EXPECT_EQ(tool.events[2].first, 'r');

    // The outline: a white circle of 20 pixels around the cursor, and white
    // nowhere else.
    QImage frame = view.grabFramebuffer();
    int white = 0, stray = 0;
    for (int y = 0; y < frame.height(); ++y)
        for (int x = 0; x < frame.width(); ++x) {
            if (!hasColour(frame, {x + 0.5, y + 0.5}, 255, 255, 255))
                continue;
            const double r = std::hypot(x + 0.5 - 100, y + 0.5 - 100);
            ++(r > 18.0 && r < 22.0 ? white : stray);
        }
    EXPECT_GT(white, 80); // a circumference of 125 pixels
    EXPECT_EQ(stray, 0);
    EXPECT_TRUE(hasColour(frame, {100, 100}, 0, 0, 0));
    EXPECT_TRUE(hasColour(frame, {100, 88}, 0, 0, 0));

    // A stroke open when the tool changes is ended on that tool.
    sendMouse(&view, QEvent::MouseButtonPress, {100, 100}, Qt::LeftButton, Qt::LeftButton);
    view.setTool(nullptr);
    EXPECT_EQ(tool.events.back().first, 'r');
    sendMouse(&view, QEvent::MouseButtonRelease, {100, 100}, Qt::LeftButton, Qt::NoButton);
    EXPECT_EQ(tool.events.size(), 5u);
    frame = view.grabFramebuffer();
    EXPECT_TRUE(hasColour(frame, {120, 100}, 0, 0, 0)); // no tool, no outline
}

} // namespace

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    // Listing the tests (CTest's discovery) must work without a display.
    if (::testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    QCoreApplication::setAttribute(Qt::AA_UseDesktopOpenGL, true);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, true);
    QSurfaceFormat format;
    format.setVersion(2, 1);
    format.setSwapInterval(0);
    QSurfaceFormat::setDefaultFormat(format);
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
