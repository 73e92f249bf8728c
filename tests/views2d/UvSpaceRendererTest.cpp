#include "Image.h"
#include "MeshReadback.h"
#include "ProjectDocument.h"
#include "ProjectEdits.h"
#include "UvEdits.h"
#include "UvOverlay.h"
#include "Mesh.h"
#include "../ErrorCapture.h"
#include "MessageHandler.h"
#include "UvSpaceRenderer.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QMatrix4x4>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QSurfaceFormat>
#include <QUndoStack>

#include <cmath>
#include <memory>

namespace {

// Two triangles covering the UV rectangle u0..u1 x v0..v1 on island
// `island`; `position` places each corner in the model.
template <class Position>
void addQuad(MeshData& mesh, float u0, float v0, float u1, float v1, int island, Position position,
             QVector3D normal)
{
    auto corner = [&](float u, float v) {
        MeshVertex vertex{};
        const QVector3D p = position(u, v);
        vertex.vertex[0] = p.x(), vertex.vertex[1] = p.y(), vertex.vertex[2] = p.z();
        vertex.normal[0] = normal.x(), vertex.normal[1] = normal.y(), vertex.normal[2] = normal.z();
        vertex.texCoord[0] = u, vertex.texCoord[1] = v, vertex.texCoord[2] = float(island);
        vertex.tangent[0] = 1.0f;
        vertex.binormal[2] = 1.0f;
        return vertex;
    };
    mesh.vertices.insert(mesh.vertices.end(), {corner(u0, v0), corner(u1, v0), corner(u1, v1), corner(u0, v0),
                                               corner(u1, v1), corner(u0, v1)});
}

// Island 0 at UV 0.1..0.3 x 0.1..0.3 (bottom left), island 1 at
// 0.6..0.8 x 0.1..0.3 (bottom right): rows 6..18 of a 64 texel target.
MeshData twoIslands()
{
    MeshData mesh;
    auto flat = [](float u, float v) { return QVector3D(u, 0.0f, v); };
    addQuad(mesh, 0.1f, 0.1f, 0.3f, 0.3f, 0, flat, QVector3D(0, 1, 0));
    addQuad(mesh, 0.6f, 0.1f, 0.8f, 0.3f, 1, flat, QVector3D(0, 1, 0));
    mesh.islandCount = 2;
    return mesh;
}

float channel(const Image& image, int x, int y, int c)
{
    return image.data[image.channels() * (size_t(y) * image.width + x) + c];
}

class UvSpaceRendererTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        surface.create();
        ASSERT_TRUE(context.create());
        ASSERT_TRUE(context.makeCurrent(&surface));
    }
    void TearDown() override
    {
        renderer.releaseGL();
        meshes.clear();
        context.doneCurrent();
        EXPECT_TRUE(errorLog.empty()) << errorLog.text();
    }
    Mesh* mesh(const MeshData& data)
    {
        meshes.push_back(std::make_unique<Mesh>(data));
        return meshes.back().get();
    }

    QOffscreenSurface surface;
    QOpenGLContext context;
    UvSpaceRenderer renderer;
    std::vector<std::unique_ptr<Mesh>> meshes;
    ErrorCapture errorLog;
};

TEST_F(UvSpaceRendererTest, AutoDirectionFromNormalsAndFromWorldPosition)
{
    // A plane in the XZ plane, UV 0.25..0.75: mode 2 projects its normal
    // (0, 1, 0) onto (0, 1), stored as (0.5, 0) and read as (~0, -1).
    MeshData data;
    addQuad(data, 0.25f, 0.25f, 0.75f, 0.75f, 0, [](float u, float v) { return QVector3D(u, 0.0f, v); },
            QVector3D(0, 1, 0));
    Mesh* plane = mesh(data);
    Image map(32, 32, RGB);
    for (uint64_t i = 0; i < map.pixelCount(); ++i)
        map.data[3 * i + 2] = 0.7f;

    ASSERT_TRUE(renderer.generateAutoDirection(plane, &map, 2));
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 32; ++x) {
            const bool covered = x >= 8 && x < 24 && y >= 8 && y < 24;
            if (covered) {
                EXPECT_NEAR(channel(map, x, y, 0), 0.0f, 1.0f / 255.0f) << x << "," << y;
                EXPECT_EQ(channel(map, x, y, 1), -1.0f) << x << "," << y;
            } else {
                EXPECT_EQ(channel(map, x, y, 0), -1.0f) << x << "," << y;
                EXPECT_EQ(channel(map, x, y, 1), -1.0f) << x << "," << y;
            }
            EXPECT_EQ(channel(map, x, y, 2), 0.7f); // other channels untouched
        }

    // The same quad stood up in the XY plane, v along +y: "World Y" grows
    // along the layout's v, d = (0, -1), stored as (0.5, 1) and read (0, 1).
    data.vertices.clear();
    addQuad(data, 0.25f, 0.25f, 0.75f, 0.75f, 0, [](float u, float v) { return QVector3D(u, v, 0.0f); },
            QVector3D(0, 0, 1));
    ASSERT_TRUE(renderer.generateAutoDirection(mesh(data), &map, 4));
    EXPECT_NEAR(channel(map, 16, 16, 0), 0.0f, 1.0f / 255.0f);
    EXPECT_EQ(channel(map, 16, 16, 1), 1.0f);

    // A map of another size gets a framebuffer of its size.
    Image small(8, 4, RGB);
    ASSERT_TRUE(renderer.generateAutoDirection(plane, &small, 2));
    EXPECT_EQ(channel(small, 4, 2, 1), -1.0f);
    EXPECT_NEAR(channel(small, 4, 2, 0), 0.0f, 1.0f / 255.0f);
    EXPECT_EQ(channel(small, 0, 0, 0), -1.0f);

    // Nothing to do without a mesh or a map.
    EXPECT_FALSE(renderer.generateAutoDirection(nullptr, &map, 2));
    EXPECT_FALSE(renderer.generateAutoDirection(plane, nullptr, 2));
}

TEST_F(UvSpaceRendererTest, IslandMasksGrowByTheAsymmetricWindow)
{
    Mesh* islands = mesh(twoIslands());
    Image mask(64, 64, Gray);

    // All islands: covered texels 6..18 grow to 2..23 (x-5 .. x+4 window).
    ASSERT_TRUE(renderer.loadOutputMaskFromUVIsland(islands, &mask, nullptr, -1, false));
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) {
            const bool rows = y >= 2 && y <= 23;
            const bool inFirst = x >= 2 && x <= 23, inSecond = x >= 34 && x <= 55;
            EXPECT_EQ(channel(mask, x, y, 0), rows && (inFirst || inSecond) ? 1.0f : 0.0f) << x << "," << y;
        }

    // One island replaces the mask.
    ASSERT_TRUE(renderer.loadOutputMaskFromUVIsland(islands, &mask, nullptr, 1, false));
    EXPECT_EQ(channel(mask, 12, 12, 0), 0.0f);
    EXPECT_EQ(channel(mask, 45, 12, 0), 1.0f);

    // Adding accumulates and never goes above 1.
    for (uint64_t i = 0; i < mask.pixelCount(); ++i)
        mask.data[i] = 0.25f;
    ASSERT_TRUE(renderer.loadOutputMaskFromUVIsland(islands, &mask, nullptr, 0, true));
    ASSERT_TRUE(renderer.loadOutputMaskFromUVIsland(islands, &mask, nullptr, 0, true));
    float highest = 0.0f;
    for (uint64_t i = 0; i < mask.pixelCount(); ++i)
        highest = std::max(highest, mask.data[i]);
    EXPECT_EQ(highest, 1.0f);
    EXPECT_EQ(channel(mask, 12, 12, 0), 1.0f);
    EXPECT_EQ(channel(mask, 45, 12, 0), 0.25f);
    EXPECT_EQ(channel(mask, 12, 40, 0), 0.25f);

    EXPECT_FALSE(renderer.loadOutputMaskFromUVIsland(islands, nullptr, nullptr, -1, false));
    EXPECT_FALSE(renderer.loadOutputMaskFromUVIsland(nullptr, &mask, nullptr, -1, false));
}

TEST_F(UvSpaceRendererTest, MaskBecomesAnEvenSquareOfTheGeneratedImage)
{
    Mesh* islands = mesh(twoIslands());
    Image mask(16, 16, Gray);
    const Image generated(1023, 512, RGB);
    ASSERT_TRUE(renderer.loadOutputMaskFromUVIsland(islands, &mask, &generated, -1, false));
    EXPECT_EQ(mask.width, 1024u);
    EXPECT_EQ(mask.height, 1024u);
    EXPECT_EQ(mask.format, Gray);
    // Drawn at the new size: UV 0.2 is texel 204.
    EXPECT_EQ(channel(mask, 204, 204, 0), 1.0f);
    EXPECT_EQ(channel(mask, 204, 600, 0), 0.0f);
}

TEST_F(UvSpaceRendererTest, PickingFindsTheIslandUnderTheCursor)
{
    Mesh* islands = mesh(twoIslands());
    const QSize view(64, 64);
    const QMatrix4x4 identity;
    // Framebuffer row 12 is widget row 51 (the cursor counts from the top).
    EXPECT_EQ(renderer.pickIsland(islands, identity, view, QPointF(12, 51)), 0);
    EXPECT_EQ(renderer.pickIsland(islands, identity, view, QPointF(45.7, 51.2)), 1);
    EXPECT_EQ(renderer.pickIsland(islands, identity, view, QPointF(45, 12)), -1);
    EXPECT_EQ(renderer.pickIsland(islands, identity, view, QPointF(30, 51)), -1);
    EXPECT_EQ(renderer.pickIsland(islands, identity, view, QPointF(-3, 51)), -1);
    EXPECT_EQ(renderer.pickIsland(islands, identity, view, QPointF(12, 400)), -1);

    // The view's matrix moves the layout: half a clip unit is 16 pixels.
    QMatrix4x4 moved;
    moved.translate(0.5f, 0.0f, 0.0f);
    EXPECT_EQ(renderer.pickIsland(islands, moved, view, QPointF(30, 51)), 0);
    EXPECT_EQ(renderer.pickIsland(islands, moved, view, QPointF(12, 51)), -1);
    EXPECT_EQ(renderer.pickIsland(nullptr, identity, view, QPointF(12, 51)), -1);
}

TEST_F(UvSpaceRendererTest, MeshMadeInASharedContextIsDrawn)
{
    // The 3D preview makes the meshes in its context; the generated view
    // draws them in its own, which shares buffers but not vertex arrays.
    QOpenGLContext other;
    other.setShareContext(&context);
    ASSERT_TRUE(other.create());
    ASSERT_TRUE(other.makeCurrent(&surface));
    auto islands = std::make_unique<Mesh>(twoIslands());
    ASSERT_TRUE(context.makeCurrent(&surface));
    EXPECT_EQ(renderer.pickIsland(islands.get(), QMatrix4x4(), QSize(64, 64), QPointF(45, 51)), 1);
    EXPECT_EQ(readMeshVertices(*islands).size(), 12u);
    ASSERT_TRUE(other.makeCurrent(&surface));
    islands.reset();
    ASSERT_TRUE(context.makeCurrent(&surface));
}

TEST_F(UvSpaceRendererTest, LayoutIsAWireframeWithTheSelectedIslandPink)
{
    Mesh* islands = mesh(twoIslands());
    QOpenGLFramebufferObject target(64, 64);
    auto draw = [&](bool selection, int island) {
        target.bind();
        context.functions()->glViewport(0, 0, 64, 64);
        context.functions()->glClearColor(0, 0, 0, 1);
        context.functions()->glClear(GL_COLOR_BUFFER_BIT);
        renderer.drawUvLayout(islands, QMatrix4x4(), selection, island);
        target.release();
        return target.toImage();
    };
    const QColor mint = QColor::fromRgbF(0.61, 0.9, 0.82), pink = QColor::fromRgbF(1.0, 0.7, 1.0);
    auto near = [](QColor a, QColor b) {
        return std::abs(a.red() - b.red()) <= 2 && std::abs(a.green() - b.green()) <= 2 &&
               std::abs(a.blue() - b.blue()) <= 2;
    };
    // QImage rows count from the top: framebuffer row 12 is image row 51.
    QImage picture = draw(true, 1);
    EXPECT_TRUE(near(picture.pixelColor(6, 51), mint));  // island 0's left edge
    EXPECT_TRUE(near(picture.pixelColor(38, 51), pink)); // island 1's left edge
    EXPECT_TRUE(near(picture.pixelColor(16, 55), Qt::black)); // inside, off the diagonal
    EXPECT_TRUE(near(picture.pixelColor(2, 61), Qt::black));

    picture = draw(false, 1);
    EXPECT_TRUE(near(picture.pixelColor(38, 51), mint));
}

TEST_F(UvSpaceRendererTest, PendingIslandRequestsRunAtTheNextPaint)
{
    UvOverlay overlay;
    overlay.setMesh(mesh(twoIslands()));
    Image mask(64, 64, Gray);
    overlay.setOutputMask(&mask);
    std::vector<QString> edits;
    QObject::connect(&overlay, &UvOverlay::imageEdited,
                     [&](Image* image, std::shared_ptr<const Image> before, const QString& text) {
                         EXPECT_EQ(image, &mask);
                         EXPECT_EQ(before->width, 64u);
                         edits.push_back(text);
                     });
    QOpenGLFramebufferObject target(64, 64);
    auto paint = [&] {
        target.bind();
        overlay.paint(QMatrix4x4(), QSize(64, 64), 1.0, nullptr);
        target.release();
    };

    // With island selection the island under the cursor is masked.
    overlay.setIslandSelection(true);
    overlay.setCursor(QPointF(45, 51), true);
    overlay.requestIslandMask(false);
    EXPECT_TRUE(overlay.hasPendingRequest());
    paint();
    EXPECT_FALSE(overlay.hasPendingRequest());
    EXPECT_EQ(overlay.pickedIsland(), 1);
    EXPECT_EQ(channel(mask, 45, 12, 0), 1.0f);
    EXPECT_EQ(channel(mask, 12, 12, 0), 0.0f);
    ASSERT_EQ(edits.size(), 1u);
    EXPECT_EQ(edits[0], "Load Output Mask from UV Island");

    // Flags are cleared: the next paint writes nothing.
    mask.data[45 + 64 * 12] = 0.5f;
    paint();
    EXPECT_EQ(channel(mask, 45, 12, 0), 0.5f);
    EXPECT_EQ(edits.size(), 1u);

    // Without island selection a single-island request takes all islands.
    overlay.setIslandSelection(false);
    overlay.requestIslandMask(false);
    paint();
    EXPECT_EQ(overlay.pickedIsland(), -1);
    EXPECT_EQ(channel(mask, 12, 12, 0), 1.0f);
    EXPECT_EQ(channel(mask, 45, 12, 0), 1.0f);
    overlay.requestAllIslandsMask();
    paint();
    ASSERT_EQ(edits.size(), 3u);
    EXPECT_EQ(edits[2], "Load Output Mask from ALL UV Island");

    // Without a mesh nothing is written or announced.
    overlay.setMesh(nullptr);
    overlay.requestAllIslandsMask();
    paint();
    EXPECT_EQ(edits.size(), 3u);
    overlay.releaseGL();
}

TEST_F(UvSpaceRendererTest, MapEditsAreUndoSteps)
{
    ProjectDocument document;
    auto* map = ProjectEdits::newDirectionMap(document).directionMap();
    ASSERT_NE(map, nullptr);
    UvOverlay overlay;
    overlay.setMesh(mesh(twoIslands()));
    overlay.setDirectionMap(&map->image);
    overlay.setOutputMask(&document.store().projectMask);
    overlay.setAutoMode(2);
    QObject::connect(&overlay, &UvOverlay::imageEdited,
                     [&](Image* image, std::shared_ptr<const Image> before, const QString& text) {
                         EXPECT_TRUE(UvEdits::recordImageEdit(document, image, *before, text));
                     });
    const Image mapBefore = map->image;
    const int steps = document.undoStack()->count();

    ASSERT_TRUE(overlay.generateAutoDirection());
    EXPECT_EQ(document.undoStack()->count(), steps + 1);
    EXPECT_EQ(document.undoStack()->undoText(), "Auto Generate Direction Map from Geometry Normals");
    EXPECT_EQ(channel(map->image, 0, 0, 0), -1.0f);
    document.undoStack()->undo();
    for (uint64_t i = 0; i < map->image.floatCount(); ++i)
        ASSERT_EQ(map->image.data[i], mapBefore.data[i]);

    // The mask grows to the generated image's square; undo brings back the
    // old size and pixels.
    Image& mask = document.store().projectMask;
    const Image maskBefore = mask;
    const Image generated(600, 300, RGB);
    ASSERT_TRUE(overlay.loadOutputMaskFromUVIsland(-1, false, &generated));
    EXPECT_EQ(mask.width, 600u);
    EXPECT_EQ(document.undoStack()->undoText(), "Load Output Mask from ALL UV Island");
    document.undoStack()->undo();
    ASSERT_EQ(mask.width, maskBefore.width);
    ASSERT_EQ(mask.height, maskBefore.height);
    for (uint64_t i = 0; i < mask.floatCount(); ++i)
        ASSERT_EQ(mask.data[i], maskBefore.data[i]);
    overlay.releaseGL();
}

TEST_F(UvSpaceRendererTest, RefusedEditsPutTheOldPixelsBack)
{
    ProjectDocument document;
    Image& mask = document.store().projectMask;
    const Image before = mask;
    for (uint64_t i = 0; i < mask.floatCount(); ++i)
        mask.data[i] = 0.0f;
    document.setReadOnly(true);
    EXPECT_FALSE(UvEdits::recordImageEdit(document, &mask, before, "Edit"));
    EXPECT_EQ(mask.data[0], before.data[0]);
    document.setReadOnly(false);

    // An image of no record is not an undo step either, and not touched.
    Image stray(4, 4, Gray);
    const Image strayBefore(4, 4, Gray);
    stray.data[0] = 1.0f;
    EXPECT_FALSE(UvEdits::recordImageEdit(document, &stray, strayBefore, "Edit"));
    EXPECT_EQ(stray.data[0], 1.0f);
    EXPECT_EQ(document.undoStack()->count(), 0);
}

TEST_F(UvSpaceRendererTest, MeshVerticesReadBackFromTheBuffer)
{
    const MeshData data = makeCylinder(32, 1);
    const std::vector<MeshVertex> read = readMeshVertices(*mesh(data));
    ASSERT_EQ(read.size(), data.vertices.size());
    for (size_t i = 0; i < read.size(); ++i)
        for (int k = 0; k < 3; ++k) {
            ASSERT_EQ(read[i].vertex[k], data.vertices[i].vertex[k]);
            ASSERT_EQ(read[i].texCoord[k], data.vertices[i].texCoord[k]);
        }
    EXPECT_TRUE(readMeshVertices(*mesh(MeshData())).empty());
}

} // namespace

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    // Listing the tests (CTest's discovery) must work without a display.
    if (::testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    QCoreApplication::setAttribute(Qt::AA_UseDesktopOpenGL, true);
    QSurfaceFormat format;
    format.setVersion(2, 1);
    QSurfaceFormat::setDefaultFormat(format);
    QGuiApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
