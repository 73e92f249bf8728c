#include "Image.h"
#include "Mesh.h"
#include "Preview2DExtended.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>
#include <QTest>

#include <cmath>
#include <memory>

namespace {

// Island 0 over UV 0.1 .. 0.3 in both directions, island 1 over u 0.6 .. 0.8,
// v 0.1 .. 0.3.
MeshData twoIslands()
{
    MeshData mesh;
    auto quad = [&mesh](float u0, float u1, int island) {
        const float v0 = 0.1f, v1 = 0.3f;
        auto corner = [&](float u, float v) {
            MeshVertex vertex{};
            vertex.vertex[0] = u, vertex.vertex[2] = v;
            vertex.normal[1] = 1.0f;
            vertex.texCoord[0] = u, vertex.texCoord[1] = v, vertex.texCoord[2] = float(island);
            return vertex;
        };
        mesh.vertices.insert(mesh.vertices.end(), {corner(u0, v0), corner(u1, v0), corner(u1, v1), corner(u0, v0),
                                                   corner(u1, v1), corner(u0, v1)});
    };
    quad(0.1f, 0.3f, 0);
    quad(0.6f, 0.8f, 1);
    mesh.islandCount = 2;
    return mesh;
}

// A line on a pixel boundary may land on either side: the pixel at `at` or
// the one to its left.
bool near(const QImage& frame, QPoint at, const double* rgb)
{
    for (int x = at.x() - 1; x <= at.x(); ++x) {
        const QRgb c = frame.pixel(x, at.y());
        if (std::abs(qRed(c) - rgb[0] * 255) <= 3 && std::abs(qGreen(c) - rgb[1] * 255) <= 3 &&
            std::abs(qBlue(c) - rgb[2] * 255) <= 3)
            return true;
    }
    return false;
}

void sendMouse(QWidget* widget, QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::KeyboardModifiers keys)
{
    QMouseEvent event(type, at, widget->mapToGlobal(at), button, button, keys);
    QApplication::sendEvent(widget, &event);
}

float maskAt(const Image& mask, float u, float v)
{
    return mask.data[uint32_t(v * mask.height) * mask.width + uint32_t(u * mask.width)];
}

TEST(GeneratedViewUv, LayoutPicksAndMasksIslandsUnderTheCursor)
{
    // A square picture as tall as the view, centred: UV (u, v) sits 100 u
    // right of its left side, 100 (1 - v) down.
    Image picture(64, 64, RGB);
    Image mask(64, 64, Gray);
    Preview2DExtended view;
    view.setImage(&picture);
    view.resize(100, 100);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    view.makeCurrent();
    auto islands = std::make_unique<Mesh>(twoIslands());
    view.doneCurrent();

    const int left = (view.width() - 100) / 2;
    auto at = [left](float u, float v) { return QPoint(left + int(std::lround(100 * u)), int(std::lround(100 * (1 - v)))); };
    UvOverlay* overlay = view.uvOverlay();
    overlay->setOutputMask(&mask);
    int edits = 0;
    QObject::connect(overlay, &UvOverlay::imageEdited, [&edits] { ++edits; });
    view.ModelChanged(islands.get());
    overlay->setLayoutVisible(true);
    const double mint[3] = {0.61, 0.9, 0.82}, pink[3] = {1.0, 0.7, 1.0}, black[3] = {0, 0, 0};
    QImage frame = view.grabFramebuffer();
    EXPECT_TRUE(near(frame, at(0.1f, 0.2f), mint)); // island 0's left edge
    EXPECT_TRUE(near(frame, at(0.6f, 0.2f), mint)); // island 1's left edge
    EXPECT_TRUE(near(frame, at(0.45f, 0.6f), black));

    // With island selection the island under the cursor turns pink.
    overlay->setIslandSelection(true);
    sendMouse(&view, QEvent::MouseMove, at(0.7f, 0.2f), Qt::NoButton, Qt::NoModifier);
    frame = view.grabFramebuffer();
    EXPECT_EQ(overlay->pickedIsland(), 1);
    EXPECT_TRUE(near(frame, at(0.6f, 0.2f), pink));
    EXPECT_TRUE(near(frame, at(0.1f, 0.2f), mint));

    // A click makes that island the mask; Shift+click adds the other one.
    sendMouse(&view, QEvent::MouseButtonPress, at(0.7f, 0.2f), Qt::LeftButton, Qt::NoModifier);
    sendMouse(&view, QEvent::MouseButtonRelease, at(0.7f, 0.2f), Qt::LeftButton, Qt::NoModifier);
    view.grabFramebuffer();
    EXPECT_EQ(edits, 1);
    EXPECT_EQ(maskAt(mask, 0.7f, 0.2f), 1.0f);
    EXPECT_EQ(maskAt(mask, 0.2f, 0.2f), 0.0f);
    sendMouse(&view, QEvent::MouseMove, at(0.2f, 0.2f), Qt::NoButton, Qt::NoModifier);
    sendMouse(&view, QEvent::MouseButtonPress, at(0.2f, 0.2f), Qt::LeftButton, Qt::ShiftModifier);
    sendMouse(&view, QEvent::MouseButtonRelease, at(0.2f, 0.2f), Qt::LeftButton, Qt::ShiftModifier);
    view.grabFramebuffer();
    EXPECT_EQ(edits, 2);
    EXPECT_EQ(maskAt(mask, 0.7f, 0.2f), 1.0f);
    EXPECT_EQ(maskAt(mask, 0.2f, 0.2f), 1.0f);
    EXPECT_EQ(maskAt(mask, 0.5f, 0.7f), 0.0f);

    // Without a mesh nothing is drawn over the picture.
    view.ModelChanged(nullptr);
    frame = view.grabFramebuffer();
    EXPECT_TRUE(near(frame, at(0.1f, 0.2f), black));
    EXPECT_TRUE(near(frame, at(0.1f, 0.2f) + QPoint(1, 0), black));
    view.makeCurrent();
    islands.reset();
    view.doneCurrent();
}

} // namespace
