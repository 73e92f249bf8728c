#include "BasicPatchSynthesizer.h"
#include "BlendedPatch.h"
#include "EngineTestImages.h"
#include "PDG_GridAll.h"
#include "PSGBoundaryAll.h"
#include "PatchSource.h"
#include "StructuredSearch.h"
#include "SynthesizerFactory.h"

#include <gtest/gtest.h>
#include <omp.h>
#include <tinyxml2.h>

#include <algorithm>
#include <cmath>

using namespace Velmor;
using Params = ImageSynthesizer::PatchSynthesizerParams;

namespace {

constexpr int gridPeriod = 16;

// Light tiles with dark grout lines two pixels wide on a 16-pixel lattice,
// slightly mottled so that no two places match exactly. The grout lies at
// x and y = 0 and 1 (mod 16) of the source.
std::unique_ptr<LayeredImage> makeGrid(int size)
{
    auto source = std::make_unique<LayeredImage>();
    auto* colour = new Image(size, size, RGB);
    auto* height = new Image(size, size, Gray);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            const bool grout = x % gridPeriod < 2 || y % gridPeriod < 2;
            const float mottle = 0.05f * std::sin(0.7f * x + 1.3f * y) * std::cos(0.31f * x - 0.17f * y);
            float* c = colour->data + 3 * (x + size * y);
            // Tiles shaded across, as by a light from one side, so that
            // any part of the ring shows where in its tile it lies.
            const float shade = 0.2f * float(x % gridPeriod) / gridPeriod + 0.1f * float(y % gridPeriod) / gridPeriod;
            c[0] = c[1] = c[2] = grout ? 0.15f + mottle : 0.6f + shade + mottle;
            height->data[x + size * y] = grout ? 0.1f : 0.9f;
        }
    source->setLayer("Diffuse", colour);
    source->setLayer("Height", height);
    return source;
}

// The share of the grout lines that lies on one lattice: for columns (or
// rows) taken modulo the period, the darkest residue's fraction of dark
// pixels. A grid kept intact gives nearly 1 (a line crosses every row);
// lines broken and shifted from patch to patch give much less.
double latticeScore(const Image& image, bool columns)
{
    const int w = int(image.width);
    const int h = int(image.height);
    double best = 0.0;
    for (int r = 0; r < gridPeriod; ++r) {
        int64_t dark = 0;
        int64_t all = 0;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                if ((columns ? x : y) % gridPeriod != r)
                    continue;
                dark += image.data[3 * (x + w * y)] < 0.45f;
                ++all;
            }
        best = std::max(best, double(dark) / double(all));
    }
    return best;
}

std::unique_ptr<ImageSynthesizer> structured(int size, SourceSearch search = SourceSearch::Structured)
{
    std::unique_ptr<ImageSynthesizer> synthesizer(createSynthesizer("Patch Based Blended"));
    auto* p = static_cast<Params*>(synthesizer->params);
    p->patchSize = 24;
    p->patchBoundary = 6;
    p->targetWidth = p->targetHeight = uint32_t(size);
    p->sourceSearch = search;
    return synthesizer;
}

std::vector<std::vector<float>> run(ImageSynthesizer& synthesizer, LayeredImage& source, uint32_t seed,
                                    Image* direction = nullptr)
{
    synthesizer.setSeed(seed);
    synthesizer.setInputs(&source, int32_t(synthesizer.params->targetWidth),
                          int32_t(synthesizer.params->targetHeight), direction, nullptr, nullptr);
    PDG_GridAll destination;
    PSGBoundaryAll candidates;
    synthesizer.synthesize(&destination, &candidates, nullptr, 0);
    std::vector<std::vector<float>> out;
    for (const Image* layer : synthesizer.target->layers)
        out.emplace_back(layer->data, layer->data + layer->floatCount());
    return out;
}

} // namespace

TEST(StructuredSearch, GridKeepsItsLatticeWhereRandomTriesBreakIt)
{
    // 92 pixels: five and a half periods, so the source does not tile.
    auto source = makeGrid(92);
    // 192 is twelve periods: the output's own wrap-around needs no break.
    auto kept = structured(192);
    run(*kept, *source, 3);
    const Image& out = *kept->target->layers[0];
    EXPECT_GT(latticeScore(out, true), 0.9);
    EXPECT_GT(latticeScore(out, false), 0.9);

    // The same run with random tries: the measure does tell them apart.
    auto random = structured(192, SourceSearch::Random);
    run(*random, *source, 3);
    const Image& broken = *random->target->layers[0];
    EXPECT_LT(std::min(latticeScore(broken, true), latticeScore(broken, false)), 0.8);
}

TEST(StructuredSearch, ContinuationsContinueTheNeighbourAlsoTurnedAndScaled)
{
    int32_t sx = 0;
    int32_t sy = 0;
    // Right of a patch copied from (10, 20), 24 pixels on.
    continuePlacement(Placement{10, 20, 0.0f, 1.0f, 1.0f, 0, 0}, 24, 0, sx, sy);
    EXPECT_TRUE(sx == 34 && sy == 20) << sx << ", " << sy;
    // Below it.
    continuePlacement(Placement{10, 20, 0.0f, 1.0f, 1.0f, 0, 0}, 0, 24, sx, sy);
    EXPECT_TRUE(sx == 10 && sy == 44) << sx << ", " << sy;
    // The neighbour was turned a quarter: a step right in the target is a
    // step along +y in the source, as its pixels were read.
    continuePlacement(Placement{10, 20, 1.0f, 0.0f, 1.0f, 0, 0}, 24, 0, sx, sy);
    EXPECT_TRUE(sx == 10 && sy == 44) << sx << ", " << sy;
    // Scaled twice: the step in the source is twice as long.
    continuePlacement(Placement{10, 20, 0.0f, 1.0f, 2.0f, 0, 0}, 24, 0, sx, sy);
    EXPECT_TRUE(sx == 58 && sy == 20) << sx << ", " << sy;
    // The step is the one PatchSource reads at: the pixel 24 to the right of
    // the neighbour's offset (0, 0) is the new patch's offset (0, 0).
    PatchSource neighbour(nullptr, 10, 20, 15, 0.6f, 0.8f, 1.0f);
    PatchSource next(nullptr, 0, 0, 15, 0.6f, 0.8f, 1.0f);
    continuePlacement(Placement{10, 20, 0.6f, 0.8f, 1.0f, 0, 0}, 24, 0, next.sx, next.sy);
    next.place(next.sx, next.sy, 15, 0.6f, 0.8f, 1.0f);
    float ax, ay, bx, by;
    neighbour.sourcePosition(24 + 5, 7, ax, ay);
    next.sourcePosition(5, 7, bx, by);
    EXPECT_NEAR(ax, bx, 0.6f);
    EXPECT_NEAR(ay, by, 0.6f);

    // The search offers them for a destination whose neighbours are placed.
    auto source = makeGrid(200);
    LayeredImage target;
    target.setLayer("Diffuse", new Image(96, 96, RGB));
    target.setLayer("Height", new Image(96, 96, Gray));
    StructuredSearch search;
    search.init(*source, target, 200, 200, 24, 6, true, false, 4);
    search.record(-18, 6, Placement{40, 50, 0.0f, 1.0f, 1.0f, 0, 0});  // left of (6, 6)
    search.record(6, -18, Placement{100, 30, 1.0f, 0.0f, 1.0f, 0, 0}); // above it, turned
    search.beginPosition(6, 6);
    StructuredSearch::Position found[StructuredSearch::maxContinuations];
    int sides[StructuredSearch::maxContinuations];
    const int count = search.continuations(6, 6, found, sides);
    ASSERT_EQ(count, 2);
    EXPECT_TRUE(found[0].sx == 64 && found[0].sy == 50 && sides[0] == 0);
    // Down by 24 under a quarter turn is -24 along x in the source.
    EXPECT_TRUE(found[1].sx == 76 && found[1].sy == 30 && sides[1] == 1);

    // A neighbour whose run is at its limit is not continued, and its
    // continuation and what lies near it are banned.
    search.record(-18, 6, Placement{40, 50, 0.0f, 1.0f, 1.0f, search.maxRunX, 0});
    search.beginPosition(6, 6);
    EXPECT_EQ(search.continuations(6, 6, found, sides), 1);
    int32_t px = 66;
    int32_t py = 48;
    EXPECT_FALSE(search.usable(px, py));
    px = 64 + 13;
    EXPECT_TRUE(search.usable(px, py));
}

TEST(StructuredSearch, WrappingPositionsReadTheFoldedSourcePixels)
{
    auto source = EngineTest::makeSource(40, 30);
    StructuredSearch search;
    LayeredImage target;
    target.setLayer("Diffuse", new Image(64, 64, RGB));
    search.init(*source, target, 40, 30, 8, 2, true, true, 2);
    int32_t sx = -3;
    int32_t sy = 31;
    EXPECT_TRUE(search.usable(sx, sy));
    EXPECT_TRUE(sx == 37 && sy == 1);
    // Without tiling the patch (12 pixels) must lie inside the source.
    search.init(*source, target, 40, 30, 8, 2, true, false, 2);
    sx = 29;
    sy = 18;
    EXPECT_FALSE(search.usable(sx, sy));
    sx = 28;
    EXPECT_TRUE(search.usable(sx, sy));

    // A patch placed over the source's corner copies the pixels that lie
    // around the corner.
    LayeredImage out;
    for (size_t i = 0; i < source->layerCount(); ++i)
        out.setLayer(source->names[i], new Image(64, 64, source->layers[i]->format));
    BlendedPatch patch;
    patch.init(&out, 8, 2);
    patch.x = 10;
    patch.y = 20;
    std::vector<uint8_t> filled(64 * 64, 0);
    PatchSource candidate(source.get(), 35, 26, 6, 0.0f, 1.0f, 1.0f);
    patch.evaluate(candidate, filled.data(), true);
    patch.paste(filled.data(), nullptr);
    for (size_t l = 0; l < source->layerCount(); ++l) {
        const Image& in = *source->layers[l];
        const Image& written = *out.layers[l];
        for (int dy = 2; dy < 10; ++dy)
            for (int dx = 2; dx < 10; ++dx) {
                const Pixel expected = in.pixelAt((35 + dx) % 40, (26 + dy) % 30);
                const Pixel got = written.pixelAt(10 + dx, 20 + dy);
                for (uint32_t c = 0; c < in.channels(); ++c)
                    ASSERT_NEAR(got[c], expected[c], 1e-5f) << "layer " << l << " at " << dx << ", " << dy;
            }
    }
}

TEST(StructuredSearch, FixedSeedGivesTheSameOutputOnAnyThreadCount)
{
    auto source = makeGrid(92);
    Image turn(8, 8, RGB);
    for (int i = 0; i < 64; ++i) {
        turn.data[3 * i] = std::sin(0.2f * float(i));
        turn.data[3 * i + 1] = std::cos(0.2f * float(i));
    }
    const int threads = omp_get_max_threads();
    for (Image* direction : {static_cast<Image*>(nullptr), &turn}) {
        omp_set_num_threads(1);
        const auto reference = run(*structured(120), *source, 9, direction);
        for (int n : {2, 5}) {
            omp_set_num_threads(n);
            EXPECT_EQ(run(*structured(120), *source, 9, direction), reference)
                << "threads " << n << (direction ? " guided" : "");
        }
        omp_set_num_threads(threads);
        EXPECT_NE(run(*structured(120), *source, 10, direction), reference);
    }
}

TEST(StructuredSearch, TilingSourcesAreRecognisedAndTheThresholdFollowsTheSource)
{
    // 96 is six periods: the grid runs on across the edges.
    auto tiling = makeGrid(96);
    auto cut = makeGrid(92);
    EXPECT_TRUE(sourceTiles(*tiling, 96, 96));
    EXPECT_FALSE(sourceTiles(*cut, 92, 92));
    // A flat source has no edges to see: it tiles.
    LayeredImage flat;
    flat.setLayer("Grey", new Image(20, 20, Gray));
    EXPECT_TRUE(sourceTiles(flat, 20, 20));
    EXPECT_EQ(neighbourDifference(flat, 20, 20, true, 1), 0.0);
    // Both layers count unless only the first is compared.
    const double both = neighbourDifference(*cut, 92, 92, true, 1);
    const double first = neighbourDifference(*cut, 92, 92, false, 1);
    EXPECT_GT(first, 0.0);
    EXPECT_GT(both, first);
    // Farther apart, shaded tiles differ more.
    EXPECT_GT(neighbourDifference(*cut, 92, 92, false, 2), first);
}

TEST(StructuredSearch, SettingIsWrittenOnlyWhenSetAndReadBack)
{
    using Blended = BasicPatchSynthesizer::BasicPatchSynthesizerParams;
    tinyxml2::XMLDocument document;
    Blended defaults;
    tinyxml2::XMLElement* plain = document.NewElement("Synthesizer");
    document.InsertEndChild(plain);
    defaults.writeXml(plain);
    EXPECT_EQ(plain->FirstChildElement("SourceSearch"), nullptr);

    Blended structuredParams;
    structuredParams.sourceSearch = SourceSearch::Structured;
    tinyxml2::XMLElement* set = document.NewElement("Synthesizer");
    document.InsertEndChild(set);
    structuredParams.writeXml(set);
    Blended read;
    read.readXml(set);
    EXPECT_EQ(read.sourceSearch, SourceSearch::Structured);
    // An old record without the key leaves the setting as it is.
    read.readXml(plain);
    EXPECT_EQ(read.sourceSearch, SourceSearch::Structured);
    Blended fresh;
    fresh.readXml(plain);
    EXPECT_EQ(fresh.sourceSearch, SourceSearch::Random);

    // An unknown value is reported and ignored.
    set->FirstChildElement("SourceSearch")->SetText("Sideways");
    EngineTest::LogRecorder log;
    Blended odd;
    odd.readXml(set);
    EXPECT_EQ(odd.sourceSearch, SourceSearch::Random);
    EXPECT_TRUE(log.anyContains("Sideways", 1));

    // Copies carry it.
    Blended a;
    Blended b;
    a.sourceSearch = SourceSearch::Structured;
    a.copyTo(&b);
    EXPECT_EQ(b.sourceSearch, SourceSearch::Structured);
}
