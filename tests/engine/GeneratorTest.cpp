#include "EngineTestImages.h"
#include "HaltonSequence.h"
#include "PDGBoundary.h"
#include "PDG_GridAll.h"
#include "PSGBoundaryAll.h"
#include "PSGMasked.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <random>
#include <utility>
#include <vector>

using namespace Velmor;
using Positions = std::vector<std::pair<int, int>>;

static Positions drain(PixelDestGenerator& generator)
{
    Positions out;
    int32_t x;
    int32_t y;
    while (generator.next(x, y) && out.size() < 1000)
        out.emplace_back(x, y);
    return out;
}

TEST(DestinationGenerators, GridCoversTargetAndBoundaryVisitsSeams)
{
    Image target(200, 200, RGB);
    PDG_GridAll grid;
    grid.init(target, 100, 20);
    EXPECT_EQ(grid.fullSize, 140);
    EXPECT_EQ(grid.halfSize, 70);
    Positions expected;
    for (int y : {-70, 30, 130})
        for (int x : {-70, 30, 130})
            expected.emplace_back(x, y);
    EXPECT_EQ(drain(grid), expected);
    // reset() starts over.
    grid.reset();
    EXPECT_EQ(drain(grid), expected);

    PDGBoundary boundary;
    boundary.init(target, 100, 20);
    EXPECT_EQ(drain(boundary), (Positions{{-70, -70}, {30, -70}, {130, -70}, {-70, 30}, {-70, 130}}));

    // A step below 1 must not loop forever.
    PDG_GridAll broken;
    broken.init(target, 0, 0);
    EXPECT_LE(drain(broken).size(), 1u);
}

TEST(HaltonSequence, BaseThirteenValues)
{
    HaltonSequence sequence(13);
    for (int i = 1; i <= 12; ++i)
        EXPECT_NEAR(sequence.next(), i / 13.0, 1e-12) << i;
    EXPECT_NEAR(sequence.next(), 1.0 / 169.0, 1e-12);
    EXPECT_NEAR(sequence.next(), 14.0 / 169.0, 1e-12);
    for (int i = 0; i < 2000; ++i) {
        const double v = sequence.next();
        ASSERT_GT(v, 0.0);
        ASSERT_LT(v, 1.0);
    }
    EXPECT_EQ(&HaltonSequence::instance(), &HaltonSequence::instance());
    EXPECT_DOUBLE_EQ(HaltonSequence::instance().inverseBase, 1.0 / 13.0);
}

TEST(SourceGenerators, PositionsStayInRangeAndFollowTheSeed)
{
    auto source = EngineTest::makeSource(64, 48);
    PSGBoundaryAll whole;
    whole.random.seed(7);
    whole.init(*source, 16, 4);
    int minX = 1 << 30, maxX = -1, minY = 1 << 30, maxY = -1;
    Positions first;
    for (int i = 0; i < 20000; ++i) {
        int32_t x, y;
        whole.next(x, y);
        minX = std::min(minX, x), maxX = std::max(maxX, x);
        minY = std::min(minY, y), maxY = std::max(maxY, y);
        if (i < 50)
            first.emplace_back(x, y);
    }
    EXPECT_EQ(minX, 0);
    EXPECT_GE(maxX, 64 - 24 - 1);
    EXPECT_LE(maxX, 64 - 24);
    EXPECT_EQ(minY, 0);
    EXPECT_GE(maxY, 48 - 24 - 1);
    EXPECT_LE(maxY, 48 - 24);
    whole.random.seed(7);
    for (const auto& p : first) {
        int32_t x, y;
        whole.next(x, y);
        EXPECT_EQ(std::make_pair(int(x), int(y)), p);
    }

    // A source smaller than the full patch gives negative positions.
    auto tiny = EngineTest::makeSource(10, 10);
    whole.init(*tiny, 16, 4);
    int32_t x, y;
    whole.next(x, y);
    EXPECT_LE(x, 0);
    EXPECT_LE(y, 0);

    // Unmasked, the masked generator may overhang the right and bottom edges.
    PSGMasked masked;
    masked.random.seed(3);
    masked.init(*source, 16, 4);
    EXPECT_FALSE(masked.useMask);
    maxX = maxY = -1;
    for (int i = 0; i < 20000; ++i) {
        masked.next(x, y);
        ASSERT_GE(x, 0);
        ASSERT_GE(y, 0);
        ASSERT_LE(x, 64);
        ASSERT_LE(y, 48);
        maxX = std::max(maxX, x), maxY = std::max(maxY, y);
    }
    EXPECT_GT(maxX, 64 - 24);
    EXPECT_GT(maxY, 48 - 24);
}

TEST(SourceGenerators, DifferentLayerSizesWarnAndUseTheSmallest)
{
    auto source = EngineTest::makeSource(40, 30);
    source->setLayer("Extra", new Image(50, 20, Gray));
    EngineTest::LogRecorder log;
    PSGBoundaryAll generator;
    generator.init(*source, 8, 2);
    EXPECT_EQ(generator.width, 40);
    EXPECT_EQ(generator.height, 20);
    EXPECT_TRUE(log.has("Input textures have different resolutions. Using minimal lowest resolution.", Warning));
}

// The filter rules written out literally, one scan per position.
static Positions literalCandidates(const Image& mask, int W, int H, int P, int b)
{
    auto A = [&](int x, int y) { return mask.pixelAt(x, y)[0] > 0.0f; };
    std::vector<std::vector<bool>> B(W, std::vector<bool>(H, false));
    for (int x = 0; x < W; ++x)
        for (int y = 0; y < H; ++y) {
            if (!(b < x && x < W - P - b))
                continue;
            bool ok = true;
            for (int dy = -b; dy <= P + b; ++dy) {
                if (y + dy < 0)
                    continue;
                if (y + dy >= H)
                    break;
                if (!A(x, y + dy)) {
                    ok = false;
                    break;
                }
            }
            B[x][y] = ok;
        }
    Positions out;
    for (int y = 0; y < H - P; ++y)
        for (int x = 0; x < W - b - P; ++x) {
            if (!(b < y && y < H - b - P))
                continue;
            bool ok = true;
            for (int dx = -b; dx <= P + b; ++dx) {
                if (x + dx < 0)
                    continue;
                if (x + dx >= H)
                    break;
                if (!B[x + dx][y]) {
                    ok = false;
                    break;
                }
            }
            if (ok)
                out.emplace_back(x, y);
        }
    return out;
}

TEST(SourceGenerators, MaskKeepsOnlyPatchesOnTheMask)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString previous = QDir::currentPath();
    QDir::setCurrent(dir.path());

    std::mt19937 random(11);
    for (auto [W, H] : {std::pair{60, 40}, std::pair{40, 60}}) {
        auto source = EngineTest::makeSource(W, H);
        // White blobs on black, in channel 1 of an RGB mask.
        Image mask(W, H, RGB);
        for (int blob = 0; blob < 5; ++blob) {
            const int cx = int(random() % W), cy = int(random() % H), r = 6 + int(random() % 10);
            for (int y = 0; y < H; ++y)
                for (int x = 0; x < W; ++x)
                    if ((x - cx) * (x - cx) + (y - cy) * (y - cy) < r * r)
                        mask.pixelAt(x, y)[1] = 1.0f;
        }
        source->mask = &mask;
        source->maskChannel = 1;
        Image channelOne(W, H, Gray);
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x)
                channelOne.pixelAt(x, y)[0] = mask.pixelAt(x, y)[1];

        PSGMasked generator;
        EngineTest::LogRecorder log;
        generator.init(*source, 6, 2);
        const Positions expected = literalCandidates(channelOne, W, H, 6, 2);
        ASSERT_FALSE(expected.empty());
        EXPECT_TRUE(generator.useMask);
        EXPECT_EQ(Positions(generator.candidates.begin(), generator.candidates.end()), expected);
        EXPECT_TRUE(log.has("Preprocessing surface mask.", Info));
        EXPECT_TRUE(log.has("Filtering surface mask (phase X).", Info));
        // Every drawn position is one of the candidates.
        for (int i = 0; i < 200; ++i) {
            int32_t x, y;
            generator.next(x, y);
            ASSERT_NE(std::find(expected.begin(), expected.end(), std::make_pair(int(x), int(y))), expected.end());
        }
    }

    // An all-black mask (or a channel beyond the mask's) falls back to the
    // whole source.
    auto source = EngineTest::makeSource(30, 30);
    Image black(30, 30, Gray);
    source->mask = &black;
    source->maskChannel = 5;
    EngineTest::LogRecorder log;
    PSGMasked generator;
    generator.random.seed(1);
    generator.init(*source, 6, 2);
    EXPECT_FALSE(generator.useMask);
    EXPECT_TRUE(generator.candidates.empty());
    EXPECT_TRUE(log.has("Cannot find suitable source pixels for given pattern with. Mask is turned off. Try using "
                        "smaller patch size!",
                        Error));
    int32_t x, y;
    int maxX = -1;
    for (int i = 0; i < 1000; ++i) {
        generator.next(x, y);
        ASSERT_GE(x, 0);
        ASSERT_LE(x, 30);
        maxX = std::max(maxX, x);
    }
    EXPECT_GT(maxX, 20);
    EXPECT_TRUE(QFile::exists(dir.filePath("finalmask.png")));
    QDir::setCurrent(previous);
}
