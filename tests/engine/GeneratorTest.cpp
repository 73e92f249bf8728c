#include "EngineTestImages.h"
#include "HaltonSequence.h"
#include "ImageFile.h"
#include "PDGBoundary.h"
#include "PDG_GridAll.h"
#include "PSGBoundaryAll.h"
#include "PSGMasked.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <climits>
#include <random>

using namespace Velmor;
using Positions = std::vector<std::pair<int, int>>;

static Positions drain(PixelDestGenerator& generator)
{
    Positions out;
    int32_t x, y;
    while (generator.next(x, y) && out.size() < 1000)
        out.emplace_back(x, y);
    return out;
}

TEST(DestinationGenerators, GridCoversTargetAndBoundaryVisitsSeams)
{
    Image target(200, 200, RGB);
    PDG_GridAll grid;
    grid.init(target, 100, 20);
    const Positions expected = {{-70, -70}, {30, -70}, {130, -70}, {-70, 30}, {30, 30},
                                {130, 30},  {-70, 130}, {30, 130}, {130, 130}};
    EXPECT_EQ(drain(grid), expected);
    grid.reset();
    EXPECT_EQ(drain(grid), expected);

    PDGBoundary boundary;
    boundary.init(target, 100, 20);
    EXPECT_EQ(drain(boundary), (Positions{{-70, -70}, {30, -70}, {130, -70}, {-70, 30}, {-70, 130}}));

    PDG_GridAll broken; // a step below 1 must not loop forever
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
        ASSERT_TRUE(v > 0.0 && v < 1.0) << v;
    }
}

static Positions draw(PixelSourceGenerator& generator, int n)
{
    Positions out(n);
    for (auto& [x, y] : out)
        generator.next(x, y);
    return out;
}

// {min x, max x, min y, max y} of the positions.
static std::array<int, 4> bounds(const Positions& positions)
{
    std::array<int, 4> b{INT_MAX, INT_MIN, INT_MAX, INT_MIN};
    for (auto [x, y] : positions)
        b = {std::min(b[0], x), std::max(b[1], x), std::min(b[2], y), std::max(b[3], y)};
    return b;
}

TEST(SourceGenerators, PositionsStayInRangeAndFollowTheSeed)
{
    auto source = EngineTest::makeSource(64, 48);
    PSGBoundaryAll whole;
    whole.random.seed(7);
    whole.init(*source, 16, 4);
    const Positions first = draw(whole, 20000);
    const auto [minX, maxX, minY, maxY] = bounds(first);
    EXPECT_TRUE(minX == 0 && minY == 0);
    EXPECT_TRUE((maxX == 64 - 24 || maxX == 64 - 24 - 1) && (maxY == 48 - 24 || maxY == 48 - 24 - 1));
    whole.random.seed(7);
    EXPECT_EQ(draw(whole, 50), Positions(first.begin(), first.begin() + 50));

    // A source smaller than the full patch gives negative positions.
    auto tiny = EngineTest::makeSource(10, 10);
    whole.init(*tiny, 16, 4);
    const auto corner = draw(whole, 1)[0];
    EXPECT_TRUE(corner.first <= 0 && corner.second <= 0);

    // Unmasked, the masked generator may overhang the right and bottom edges.
    PSGMasked masked;
    masked.random.seed(3);
    masked.init(*source, 16, 4);
    EXPECT_FALSE(masked.useMask);
    const auto b = bounds(draw(masked, 20000));
    EXPECT_TRUE(b[0] >= 0 && b[2] >= 0 && b[1] <= 64 && b[3] <= 48);
    EXPECT_TRUE(b[1] > 64 - 24 && b[3] > 48 - 24);
}

TEST(SourceGenerators, ExactDrawsFromTheSeededStream)
{
    // The classic 15-bit stream: seed 1 starts 41, 18467, 6334, 26500.
    RandomGenerator random(1);
    for (int expected : {41, 18467, 6334, 26500, 19169, 15724})
        EXPECT_EQ(random.next(), expected);

    // x from the first draw, y from the second, over a source that is wider
    // than high: (40 x 24 positions) 41 -> 0, 18467 -> 13, 6334 -> 7, 26500 -> 19.
    auto source = EngineTest::makeSource(64, 48);
    PSGBoundaryAll whole;
    whole.random.seed(1);
    whole.init(*source, 16, 4);
    EXPECT_EQ(draw(whole, 2), (Positions{{0, 13}, {7, 19}}));
    // Unmasked, the masked generator spans the whole 64 x 48.
    PSGMasked masked;
    masked.random.seed(1);
    masked.init(*source, 16, 4);
    EXPECT_EQ(draw(masked, 2), (Positions{{0, 27}, {12, 38}}));
}

TEST(SourceGenerators, DifferentLayerSizesWarnAndUseTheSmallest)
{
    auto source = EngineTest::makeSource(40, 30);
    source->setLayer("Extra", new Image(50, 20, Gray));
    EngineTest::LogRecorder log;
    PSGBoundaryAll generator;
    generator.init(*source, 8, 2);
    EXPECT_TRUE(generator.width == 40 && generator.height == 20);
    EXPECT_TRUE(log.has("Input textures have different resolutions. Using minimal lowest resolution.", Warning));
}

// The filter rules written out literally, one scan per position; `phaseY`
// receives the first phase's grid.
static Positions literalCandidates(const Image& mask, int W, int H, int P, int b,
                                   std::vector<std::vector<bool>>* phaseY = nullptr)
{
    std::vector<std::vector<bool>> column(W, std::vector<bool>(H, false));
    for (int x = b + 1; x < W - P - b; ++x)
        for (int y = 0; y < H; ++y) {
            bool ok = true;
            for (int dy = std::max(-b, -y); dy <= P + b && y + dy < H && ok; ++dy)
                ok = mask.pixelAt(x, y + dy)[0] > 0.0f;
            column[x][y] = ok;
        }
    if (phaseY)
        *phaseY = column;
    Positions out;
    for (int y = b + 1; y < H - b - P; ++y)
        for (int x = 0; x < W - b - P; ++x) {
            bool ok = true;
            for (int dx = std::max(-b, -x); dx <= P + b && x + dx < H && ok; ++dx)
                ok = column[x + dx][y];
            if (ok)
                out.emplace_back(x, y);
        }
    return out;
}

TEST(SourceGenerators, MaskKeepsOnlyPatchesOnTheMask)
{
    QTemporaryDir dir;
    const QString previous = QDir::currentPath();
    QDir::setCurrent(dir.path());

    std::mt19937 random(11);
    for (auto [W, H] : {std::pair{60, 40}, std::pair{40, 60}}) {
        auto source = EngineTest::makeSource(W, H);
        // White blobs on black, in channel 1 of an RGB mask.
        Image mask(W, H, RGB), channelOne(W, H, Gray);
        for (int blob = 0; blob < 5; ++blob) {
            const int cx = int(random() % W), cy = int(random() % H), r = 6 + int(random() % 10);
            for (int i = 0; i < W * H; ++i)
                if ((i % W - cx) * (i % W - cx) + (i / W - cy) * (i / W - cy) < r * r)
                    mask.data[3 * i + 1] = channelOne.data[i] = 1.0f;
        }
        source->mask = &mask;
        source->maskChannel = 1;
        PSGMasked generator;
        EngineTest::LogRecorder log;
        generator.init(*source, 6, 2);
        const std::vector<std::pair<QString, int>> messages = {{"Preprocessing surface mask.", Info},
                                                               {"Filtering surface mask (phase Y).", Info},
                                                               {"Filtering surface mask (phase X).", Info}};
        EXPECT_EQ(log.lines, messages);
        std::vector<std::vector<bool>> phaseY;
        const Positions expected = literalCandidates(channelOne, W, H, 6, 2, &phaseY);
        ASSERT_FALSE(expected.empty());
        EXPECT_TRUE(generator.useMask);
        EXPECT_EQ(Positions(generator.candidates.begin(), generator.candidates.end()), expected);

        // Halton picks: index q x (count - 1) of the process-wide sequence.
        HaltonSequence shadow(13);
        shadow.value = HaltonSequence::instance().value;
        const size_t n = expected.size();
        bool countWouldDiffer = false;
        for (auto p : draw(generator, 200)) {
            const double q = shadow.next();
            ASSERT_EQ(p, expected[size_t(q * double(n - 1))]);
            countWouldDiffer = countWouldDiffer || size_t(q * double(n)) != size_t(q * double(n - 1));
        }
        EXPECT_TRUE(countWouldDiffer);

        // "finalmask.png" holds the first phase's grid.
        Image written;
        ImageFileInfo info;
        ASSERT_TRUE(loadImage(info, dir.filePath("finalmask.png"), written));
        ASSERT_TRUE(written.width == uint32_t(W) && written.height == uint32_t(H) && written.format == Gray);
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x)
                ASSERT_EQ(written.pixelAt(x, y)[0], phaseY[x][y] ? 1.0f : 0.0f) << x << "," << y;
    }

    // An all-black mask (or a channel beyond the mask's) falls back to the whole source.
    auto source = EngineTest::makeSource(30, 30);
    Image black(30, 30, Gray);
    source->mask = &black;
    source->maskChannel = 5;
    EngineTest::LogRecorder log;
    PSGMasked generator;
    generator.random.seed(1);
    generator.init(*source, 6, 2);
    EXPECT_FALSE(generator.useMask);
    EXPECT_TRUE(log.has("Cannot find suitable source pixels for given pattern with. Mask is turned off. Try using "
                        "smaller patch size!",
                        Error));
    const auto b = bounds(draw(generator, 1000));
    EXPECT_TRUE(b[0] >= 0 && b[1] <= 30 && b[1] > 20);
    EXPECT_TRUE(QFile::exists(dir.filePath("finalmask.png")));
    EXPECT_EQ(log.count(Error), 2); // the message and what was wrong with the mask
    EXPECT_TRUE(log.anyContains("black everywhere in channel 0", Error));

    // A mask without pixels goes through the same steps and says so.
    QFile::remove(dir.filePath("finalmask.png"));
    Image none;
    source->mask = &none;
    log.lines.clear();
    generator.init(*source, 6, 2);
    EXPECT_FALSE(generator.useMask);
    EXPECT_TRUE(log.has("Filtering surface mask (phase Y).", Info));
    EXPECT_TRUE(log.has("Filtering surface mask (phase X).", Info));
    EXPECT_TRUE(log.has("Cannot find suitable source pixels for given pattern with. Mask is turned off. Try using "
                        "smaller patch size!",
                        Error));
    EXPECT_TRUE(log.anyContains("The surface mask has no pixels (0 x 0)", Error));

    // White, but nowhere wide enough for a whole patch.
    Image thin(30, 30, Gray);
    for (int y = 0; y < 30; ++y)
        for (int x = 10; x < 14; ++x)
            thin.data[y * 30 + x] = 1.0f;
    source->mask = &thin;
    log.lines.clear();
    generator.init(*source, 6, 2);
    EXPECT_FALSE(generator.useMask);
    EXPECT_TRUE(log.anyContains("No white area of the surface mask is large enough for a whole patch of 10 x 10",
                                Error));
    QDir::setCurrent(previous);
}
