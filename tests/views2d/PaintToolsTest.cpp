#include "BrushSettings.h"
#include "ImageSynthesizer.h"
#include "LayeredImage.h"
#include "MessageHandler.h"
#include "PaintTool.h"
#include "PaintToolBox.h"
#include "ProjectDocument.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QUndoStack>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

using ProjectData = Velmor::ProjectData;

namespace {

constexpr uint32_t mapSize = 64;

bool samePixels(const Image& a, const Image& b)
{
    return a.width == b.width && a.height == b.height && a.format == b.format
           && std::memcmp(a.data, b.data, a.floatCount() * sizeof(float)) == 0;
}

void fill(Image& image, std::initializer_list<float> value)
{
    for (uint64_t p = 0; p < image.pixelCount(); ++p)
        std::copy(value.begin(), value.end(), image.data + p * image.channels());
}

void stroke(PaintTool* tool, std::initializer_list<QPointF> points)
{
    auto it = points.begin();
    tool->press(*it);
    for (++it; it != points.end(); ++it)
        tool->move(*it);
    tool->release();
}

// Distance in pixels from the centre of pixel (x, y) to the segment a-b.
double distanceToSegment(int x, int y, QPointF a, QPointF b)
{
    const QPointF p(x + 0.5, y + 0.5);
    const QPointF ab = b - a;
    const double t = std::clamp(QPointF::dotProduct(p - a, ab) / QPointF::dotProduct(ab, ab), 0.0, 1.0);
    const QPointF d = p - (a + ab * t);
    return std::hypot(d.x(), d.y());
}

// A surface with small direction and scale maps and a small project mask.
class PaintToolsTest : public testing::Test {
protected:
    void SetUp() override
    {
        ProjectData& store = document.store();
        surface = store.addSurface("Wall");
        surface->directionMap = store.addDirectionMap();
        surface->scaleMap = store.addScaleMap();
        directions().allocate(mapSize, mapSize, Normal);
        fill(directions(), {0.0f, 1.0f, 0.0f});
        scales().allocate(mapSize, mapSize, Gray);
        fill(scales(), {1.0f});
        mask().allocate(mapSize, mapSize, Gray);
        fill(mask(), {1.0f});
        tools.setSurface(surface);
        tools.setRadius(0.1); // 6.4 map pixels
        tools.setHardness(0.5);
    }

    Image& directions() { return surface->directionMap->image; }
    Image& scales() { return surface->scaleMap->image; }
    Image& mask() { return document.store().projectMask; }
    PaintTool* use(PaintToolBox::Tool tool)
    {
        tools.setActiveTool(tool);
        return tools.currentTool();
    }
    QUndoStack* undo() { return document.undoStack(); }

    ProjectDocument document;
    PaintToolBox tools{&document};
    ProjectData::SurfaceData* surface = nullptr;
};

} // namespace

// One fast stroke (a single move) across the map: every pixel within the
// hard core takes the stroke's direction, pixels under the soft rim stay
// unit vectors, nothing beyond the radius changes, and the stroke is one
// undo step that gives back every pixel.
TEST_F(PaintToolsTest, DirectionStrokeWritesItsDirectionUnderItsPathOnly)
{
    const Image before = directions();
    stroke(use(PaintToolBox::Direction), {{0.2, 0.5}, {0.8, 0.5}});
    const Image after = directions();
    ASSERT_EQ(undo()->count(), 1);

    const QPointF a(0.2 * mapSize, 0.5 * mapSize);
    const QPointF b(0.8 * mapSize, 0.5 * mapSize);
    const double radius = 0.1 * mapSize;
    int core = 0;
    for (int y = 0; y < int(mapSize); ++y)
        for (int x = 0; x < int(mapSize); ++x) {
            const Pixel p = directions().pixelAt(x, y);
            const double d = distanceToSegment(x, y, a, b);
            if (d <= 0.5 * radius - 0.01) {
                ++core;
                EXPECT_FLOAT_EQ(p[0], 1.0f) << x << ", " << y;
                EXPECT_FLOAT_EQ(p[1], 0.0f) << x << ", " << y;
            } else if (d >= radius) {
                EXPECT_EQ(p[0], 0.0f) << x << ", " << y;
                EXPECT_EQ(p[1], 1.0f) << x << ", " << y;
            } else {
                EXPECT_NEAR(std::hypot(p[0], p[1]), 1.0, 1e-5) << x << ", " << y;
            }
        }
    EXPECT_GT(core, 100);

    undo()->undo();
    EXPECT_TRUE(samePixels(directions(), before));
    undo()->redo();
    EXPECT_TRUE(samePixels(directions(), after));
}

// A stroke up the screen paints the identity (0, 1); a stroke down its
// opposite; a press without a move paints nothing, as it has no direction.
TEST_F(PaintToolsTest, DirectionFollowsTheStrokeAndNeedsAMove)
{
    PaintTool* brush = use(PaintToolBox::Direction);
    stroke(brush, {{0.5, 0.5}});
    EXPECT_EQ(undo()->count(), 0);

    fill(directions(), {1.0f, 0.0f, 0.0f});
    stroke(brush, {{0.3, 0.2}, {0.3, 0.25}, {0.3, 0.3}});
    Pixel up = directions().pixelAt(int(0.3 * mapSize), int(0.25 * mapSize));
    EXPECT_NEAR(up[0], 0.0f, 1e-6);
    EXPECT_NEAR(up[1], 1.0f, 1e-6);

    stroke(brush, {{0.7, 0.8}, {0.7, 0.6}});
    Pixel down = directions().pixelAt(int(0.7 * mapSize), int(0.7 * mapSize));
    EXPECT_NEAR(down[0], 0.0f, 1e-6);
    EXPECT_NEAR(down[1], -1.0f, 1e-6);
}

// On an output twice as wide as high, a round brush covers twice as many
// map rows as map columns; and a dab over the left edge wraps to the right.
TEST_F(PaintToolsTest, BrushIsRoundOnTheShownImageAndWraps)
{
    // Before there is an output the view shows a square.
    surface->synthesizer()->params->targetWidth = 2048;
    surface->synthesizer()->params->targetHeight = 1024;
    Velmor::ImageSynthesizer* synthesizer = surface->synthesizer();
    synthesizer->target = new LayeredImage;
    synthesizer->target->setLayer("color", new Image(64, 32, RGB));
    synthesizer->ownsTarget = true;
    synthesizer->targetReady = true;
    tools.setHardness(0.9);
    tools.setScaleValue(2.0);
    stroke(use(PaintToolBox::Scale), {{0.5, 0.5}});
    int columns = 0;
    int rows = 0;
    for (uint32_t i = 0; i < mapSize; ++i) {
        columns += scales().pixelAt(int(i), mapSize / 2)[0] != 1.0f;
        rows += scales().pixelAt(mapSize / 2, int(i))[0] != 1.0f;
    }
    EXPECT_NEAR(columns, 2 * 6.4, 1.5);
    EXPECT_NEAR(rows, 2 * 12.8, 1.5);

    tools.setScaleValue(0.0);
    stroke(use(PaintToolBox::Scale), {{0.0, 0.25}});
    EXPECT_EQ(scales().pixelAt(0, mapSize / 4)[0], 0.0f);
    EXPECT_EQ(scales().pixelAt(mapSize - 1, mapSize / 4)[0], 0.0f);
    EXPECT_EQ(scales().pixelAt(mapSize / 4, mapSize / 4)[0], 1.0f);
}

// The scale stays in the engine's range, and a stroke passing a place
// twice does not pile up beyond its strength.
TEST_F(PaintToolsTest, ScaleValuesStayInRangeAndDoNotPileUp)
{
    tools.setScaleValue(5.0);
    EXPECT_EQ(tools.settings().scaleValue, maxScaleValue);
    tools.setStrength(0.5);
    stroke(use(PaintToolBox::Scale), {{0.2, 0.5}, {0.8, 0.5}, {0.2, 0.5}, {0.8, 0.5}});
    EXPECT_FLOAT_EQ(scales().pixelAt(mapSize / 2, mapSize / 2)[0], 1.5f);
    for (uint64_t i = 0; i < scales().pixelCount(); ++i) {
        ASSERT_GE(scales().data[i], 1.0f);
        ASSERT_LE(scales().data[i], 1.5f);
    }

    tools.setScaleValue(-3.0);
    tools.setStrength(1.0);
    stroke(use(PaintToolBox::Scale), {{0.5, 0.2}, {0.5, 0.8}});
    EXPECT_EQ(scales().pixelAt(mapSize / 2, mapSize / 2)[0], minScaleValue);
    for (uint64_t i = 0; i < scales().pixelCount(); ++i) {
        ASSERT_GE(scales().data[i], minScaleValue);
        ASSERT_LE(scales().data[i], maxScaleValue);
    }
}

// The mask brush paints the project mask out and erases it back in, whatever
// the surface; each stroke one undo step on the mask.
TEST_F(PaintToolsTest, MaskBrushPaintsAndErasesTheProjectMask)
{
    tools.setSurface(nullptr);
    QSignalSpy changed(&document, &ProjectDocument::recordChanged);
    stroke(use(PaintToolBox::Mask), {{0.1, 0.1}, {0.9, 0.9}});
    EXPECT_EQ(mask().pixelAt(mapSize / 2, mapSize / 2)[0], 0.0f);
    EXPECT_EQ(mask().pixelAt(mapSize - 4, 4)[0], 1.0f);
    ASSERT_FALSE(changed.isEmpty());
    EXPECT_EQ(changed.last().at(0).value<RecordRef>(), RecordRef::projectMask(document.store()));

    tools.setMaskMode(MaskMode::Erase);
    stroke(use(PaintToolBox::Mask), {{0.5, 0.1}, {0.5, 0.9}});
    EXPECT_EQ(mask().pixelAt(mapSize / 2, mapSize / 2)[0], 1.0f);
    EXPECT_EQ(mask().pixelAt(mapSize / 4, mapSize / 4)[0], 0.0f);

    ASSERT_EQ(undo()->count(), 2);
    undo()->undo();
    EXPECT_EQ(mask().pixelAt(mapSize / 2, mapSize / 2)[0], 0.0f);
    undo()->undo();
    for (uint64_t i = 0; i < mask().pixelCount(); ++i)
        ASSERT_EQ(mask().data[i], 1.0f);
}

TEST_F(PaintToolsTest, FillsTheWholeMapOrTheFloodedArea)
{
    PaintTool* fillTool = use(PaintToolBox::Fill);
    tools.setDirectionDegrees(90.0);
    stroke(fillTool, {{0.5, 0.5}});
    for (uint64_t p = 0; p < directions().pixelCount(); ++p) {
        ASSERT_NEAR(directions().data[3 * p], 1.0f, 1e-6);
        ASSERT_NEAR(directions().data[3 * p + 1], 0.0f, 1e-6);
    }

    // Two halves of the scale map; the flood from the left one stops at the
    // right one, also across the wrapping edge.
    for (uint32_t y = 0; y < mapSize; ++y)
        for (uint32_t x = 0; x < mapSize; ++x)
            scales().pixelAt(int(x), int(y))[0] = x < mapSize / 2 ? 0.5f : 1.5f;
    const Image halves = scales();
    tools.setTargetMap(PaintMap::Scale);
    tools.setFillMode(FillMode::Flood);
    tools.setScaleValue(0.25);
    stroke(fillTool, {{0.1, 0.5}});
    for (uint32_t y = 0; y < mapSize; ++y)
        for (uint32_t x = 0; x < mapSize; ++x)
            ASSERT_EQ(scales().pixelAt(int(x), int(y))[0], x < mapSize / 2 ? 0.25f : 1.5f) << x << ", " << y;

    ASSERT_EQ(undo()->count(), 2);
    undo()->undo();
    EXPECT_TRUE(samePixels(scales(), halves));
}

// Smoothing random directions keeps every vector a unit vector and brings
// neighbours closer; smoothing a scale checkerboard stays in range.
TEST_F(PaintToolsTest, SmoothingKeepsUnitVectorsAndRange)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> angle(0.0f, 6.2831853f);
    for (uint64_t p = 0; p < directions().pixelCount(); ++p) {
        const float a = angle(random);
        directions().data[3 * p] = std::sin(a);
        directions().data[3 * p + 1] = std::cos(a);
    }
    auto roughness = [this] {
        double sum = 0.0;
        for (int y = 24; y < 40; ++y)
            for (int x = 24; x < 40; ++x) {
                const Pixel p = directions().pixelAt(x, y);
                const Pixel q = directions().pixelAt(x + 1, y);
                sum += 1.0 - (p[0] * q[0] + p[1] * q[1]);
            }
        return sum;
    };
    const double roughBefore = roughness();
    tools.setRadius(0.25);
    PaintTool* smooth = use(PaintToolBox::Smooth);
    stroke(smooth, {{0.3, 0.5}, {0.7, 0.5}, {0.3, 0.5}});
    for (uint64_t p = 0; p < directions().pixelCount(); ++p)
        ASSERT_NEAR(std::hypot(directions().data[3 * p], directions().data[3 * p + 1]), 1.0, 1e-5);
    EXPECT_LT(roughness(), 0.5 * roughBefore);

    for (uint32_t y = 0; y < mapSize; ++y)
        for (uint32_t x = 0; x < mapSize; ++x)
            scales().pixelAt(int(x), int(y))[0] = (x + y) % 2 ? maxScaleValue : minScaleValue;
    tools.setTargetMap(PaintMap::Scale);
    stroke(smooth, {{0.5, 0.5}, {0.6, 0.5}});
    const float centre = scales().pixelAt(mapSize / 2, mapSize / 2)[0];
    EXPECT_GT(centre, 0.5f);
    EXPECT_LT(centre, 1.5f);
    for (uint64_t i = 0; i < scales().pixelCount(); ++i) {
        ASSERT_GE(scales().data[i], minScaleValue);
        ASSERT_LE(scales().data[i], maxScaleValue);
    }
}

// While a run reads the store no tool changes a pixel; a stroke under way
// when the run starts is taken back.
TEST_F(PaintToolsTest, NothingChangesWhileReadOnly)
{
    const Image directionsBefore = directions();
    const Image scalesBefore = scales();
    const Image maskBefore = mask();
    document.setReadOnly(true);
    for (PaintToolBox::Tool tool : {PaintToolBox::Direction, PaintToolBox::Scale, PaintToolBox::Mask,
                                    PaintToolBox::Fill, PaintToolBox::Smooth}) {
        tools.setTargetMap(PaintMap::Scale);
        stroke(use(tool), {{0.2, 0.2}, {0.8, 0.8}});
    }
    document.setReadOnly(false);
    EXPECT_EQ(undo()->count(), 0);

    PaintTool* brush = use(PaintToolBox::Scale);
    tools.setScaleValue(2.0);
    brush->press({0.2, 0.2});
    brush->move({0.8, 0.8});
    EXPECT_FALSE(samePixels(scales(), scalesBefore));
    document.setReadOnly(true);
    EXPECT_TRUE(samePixels(scales(), scalesBefore));
    brush->move({0.8, 0.2});
    brush->release();
    EXPECT_EQ(undo()->count(), 0);

    EXPECT_TRUE(samePixels(directions(), directionsBefore));
    EXPECT_TRUE(samePixels(scales(), scalesBefore));
    EXPECT_TRUE(samePixels(mask(), maskBefore));
}

// Without a surface or its map the brushes warn and paint nothing; bad
// coordinates from the view are ignored.
TEST_F(PaintToolsTest, MissingMapsAndBadCoordinatesPaintNothing)
{
    std::vector<QString> warnings;
    QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage, &tools,
                     [&](QString text, int severity) {
                         if (severity == 1)
                             warnings.push_back(text);
                     });
    surface->directionMap = nullptr;
    stroke(use(PaintToolBox::Direction), {{0.2, 0.2}, {0.8, 0.8}});
    tools.setSurface(nullptr);
    stroke(use(PaintToolBox::Scale), {{0.2, 0.2}, {0.8, 0.8}});
    EXPECT_EQ(warnings.size(), 2u);

    tools.setSurface(surface);
    const Image before = scales();
    const double nan = std::nan("");
    stroke(use(PaintToolBox::Scale), {{nan, 0.5}, {0.5, 0.5}});
    stroke(use(PaintToolBox::Fill), {{0.5, std::numeric_limits<double>::infinity()}});
    EXPECT_TRUE(samePixels(scales(), before));
    EXPECT_EQ(undo()->count(), 0);

    // A pointer far outside the view still paints along the edge, quickly.
    tools.setScaleValue(0.0);
    stroke(use(PaintToolBox::Scale), {{0.5, 0.5}, {1e12, 0.5}});
    EXPECT_EQ(undo()->count(), 1);
}

TEST_F(PaintToolsTest, ToolBoxHandsOutTheActiveToolAndForgetsRemovedSurfaces)
{
    std::vector<PaintTool*> changed;
    QObject::connect(&tools, &PaintToolBox::toolChanged, [&](PaintTool* tool) { changed.push_back(tool); });
    tools.setActiveTool(PaintToolBox::Smooth);
    tools.setActiveTool(PaintToolBox::Smooth);
    tools.setActiveTool(PaintToolBox::NoTool);
    ASSERT_EQ(changed.size(), 2u);
    EXPECT_EQ(changed[0], tools.tool(PaintToolBox::Smooth));
    EXPECT_NE(changed[0], nullptr);
    EXPECT_EQ(changed[1], nullptr);
    EXPECT_DOUBLE_EQ(tools.tool(PaintToolBox::Direction)->outlineRadius(), 0.1);

    tools.showRecord(RecordRef(surface->scaleMap));
    EXPECT_EQ(tools.surface(), surface);
    document.replaceProject(std::make_unique<ProjectData>(), QString());
    EXPECT_EQ(tools.surface(), nullptr);
}
