#include "BasicPatchSynthesizer.h"
#include "CutoutPatchSynthesizer.h"
#include "EngineTestImages.h"
#include "PDG_GridAll.h"
#include "PSGBoundaryAll.h"
#include "PatchSource.h"
#include "SynthesizerFactory.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cstring>
#include <functional>
#include <limits>
#include <numeric>

using namespace Velmor;
using Params = ImageSynthesizer::PatchSynthesizerParams;
using Pixels = std::vector<std::vector<float>>;
using Positions = std::vector<std::pair<int, int>>;

namespace {

std::unique_ptr<ImageSynthesizer> makeSynthesizer(const char* method, int patchSize = 16, int boundary = 4,
                                                  int size = 96, uint32_t maxTries = 20)
{
    std::unique_ptr<ImageSynthesizer> synthesizer(createSynthesizer(method));
    auto* p = static_cast<Params*>(synthesizer->params);
    p->patchSize = patchSize;
    p->patchBoundary = boundary;
    p->targetWidth = p->targetHeight = size;
    p->maxTries = maxTries;
    return synthesizer;
}

Pixels pixelsOf(const LayeredImage& image)
{
    Pixels out;
    for (const Image* layer : image.layers)
        out.emplace_back(layer->data, layer->data + layer->floatCount());
    return out;
}

// One seeded run over a fresh target of the parameters' size.
Pixels run(ImageSynthesizer& synthesizer, LayeredImage& source, uint32_t seed, Image* direction = nullptr,
           Image* scale = nullptr)
{
    synthesizer.setSeed(seed);
    synthesizer.setInputs(&source, synthesizer.params->targetWidth, synthesizer.params->targetHeight, direction,
                          scale, nullptr);
    PDG_GridAll destination;
    PSGBoundaryAll candidates;
    synthesizer.synthesize(&destination, &candidates, nullptr, 0);
    return pixelsOf(*synthesizer.target);
}

// Destination generator that yields nothing.
struct NoPositions : PixelDestGenerator
{
    bool next(int32_t&, int32_t&) override { return false; }
};

// Source generator that asks for cancellation at its n-th position.
struct CancellingSource : PSGBoundaryAll
{
    CancellingSource(ImageSynthesizer& s, int n) : synthesizer(s), remaining(n) {}
    void next(int32_t& x, int32_t& y) override
    {
        PSGBoundaryAll::next(x, y);
        if (--remaining == 0)
            synthesizer.cancelRequested = true;
    }
    ImageSynthesizer& synthesizer;
    int remaining;
};

// A patch that records every candidate it is shown and reports a set error,
// so the loop's own rules can be checked exactly.
struct RecordingPatch : Patch
{
    void init(LayeredImage* target, int32_t size, int32_t boundary) override
    {
        Patch::init(target, size, boundary);
        teamSize = 1; // one candidate at a time, each through evaluate
    }
    struct Try
    {
        int32_t x, y, sx, sy;
        float dirX, dirY, scale;
    };
    float evaluate(const PatchSource& c, const uint8_t*, bool) override
    {
        tries.push_back({x, y, c.sx, c.sy, c.dirX, c.dirY, c.scale});
        return error;
    }
    void paste(uint8_t*, const Image*) override { ++pastes; }
    float error = 0.0f;
    std::vector<Try> tries;
    int pastes = 0;
};

struct RecordingSynthesizer : BasicPatchSynthesizer
{
    RecordingSynthesizer()
    {
        auto* p = patchParams();
        p->patchSize = 16;
        p->patchBoundary = 4; // half size 12
        p->targetWidth = p->targetHeight = 96;
    }
    Patch* preparePatch() override
    {
        recorder.init(target, patchParams()->patchSize, patchParams()->patchBoundary);
        return &recorder;
    }
    Params* settings() { return patchParams(); }
    RecordingPatch recorder;
};

// Always the source's top-left corner; counts the positions drawn.
struct CountingSource : PixelSourceGenerator
{
    void next(int32_t& x, int32_t& y) override
    {
        x = y = 0;
        ++draws;
    }
    int draws = 0;
};

// Yields the given positions in order.
struct ListedPositions : PixelDestGenerator
{
    explicit ListedPositions(Positions list) : positions(std::move(list)) {}
    bool next(int32_t& x, int32_t& y) override
    {
        if (index >= positions.size())
            return false;
        x = positions[index].first;
        y = positions[index++].second;
        return true;
    }
    Positions positions;
    size_t index = 0;
};

} // namespace

TEST(Synthesizer, GuidanceIsReadAtThePatchCentre)
{
    auto source = EngineTest::makeSource(40, 40);
    // 4 x 3 maps over the 96 x 96 target: centre (cx, cy) reads map pixel
    // (cx / 95 * 3, cy / 95 * 2), truncated.
    Image direction(4, 3, RGB), scale(4, 3, Gray);
    auto set = [&](int mx, int my, float dx, float dy, float s) {
        direction.data[3 * (my * 4 + mx)] = dx;
        direction.data[3 * (my * 4 + mx) + 1] = dy;
        scale.data[my * 4 + mx] = s;
    };
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    set(0, 0, 0.6f, 0.8f, 0.5f);
    set(3, 2, 0.0f, 0.0f, 2.0f);
    set(1, 1, -0.28f, 0.96f, 0.0f);
    set(1, 0, nan, 0.5f, inf);
    set(2, 1, 0.8f, -0.6f, 1.5f);
    set(2, 0, 0.3f, inf, nan);
    // Centres (0, 0), (95, 95), (42, 62), (60, 20), (64, 48), (90, 10).
    const Positions where = {{-12, -12}, {83, 83}, {30, 50}, {48, 8}, {52, 36}, {78, -2}};
    struct Guide
    {
        float dirX, dirY, scale;
    };
    const std::vector<Guide> expected = {{0.6f, 0.8f, 2.0f},  {0.0f, 1.0f, 0.9f}, {-0.28f, 0.96f, 3.0f},
                                         {0.0f, 1.0f, 1.0f},  {0.8f, -0.6f, 0.95f}, {0.0f, 1.0f, 1.0f}};

    RecordingSynthesizer synthesizer;
    synthesizer.setInputs(source.get(), 96, 96, &direction, &scale, nullptr);
    ListedPositions destination(where);
    PSGBoundaryAll candidates;
    EngineTest::LogRecorder log;
    synthesizer.synthesize(&destination, &candidates, nullptr, 0);
    ASSERT_EQ(synthesizer.recorder.tries.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        const RecordingPatch::Try& t = synthesizer.recorder.tries[i];
        EXPECT_TRUE(t.x == where[i].first && t.y == where[i].second) << i;
        EXPECT_EQ(t.dirX, expected[i].dirX) << i;
        EXPECT_EQ(t.dirY, expected[i].dirY) << i;
        EXPECT_FLOAT_EQ(t.scale, expected[i].scale) << i;
    }
    // Values that are not numbers count as no direction and scale 1, with one
    // warning per map.
    EXPECT_EQ(log.count(Warning), 2);
    EXPECT_TRUE(log.anyContains("The direction map holds values that are not finite numbers", Warning));
    EXPECT_TRUE(log.anyContains("The scale map holds values that are not finite numbers", Warning));
}

TEST(Synthesizer, ErrorRulesProgressAndCancelOfTheLoop)
{
    // Progress from the top-left row y = -12, 4, 20 ... 84 of 96 rows; only
    // increases over -1 are reported, so the first row gives nothing.
    {
        auto source = EngineTest::makeSource(40, 40);
        RecordingSynthesizer synthesizer;
        synthesizer.setInputs(source.get(), 96, 96, nullptr, nullptr, nullptr);
        PDG_GridAll destination;
        PSGBoundaryAll candidates;
        std::vector<int> progress;
        EngineTest::LogRecorder log;
        synthesizer.synthesize(&destination, &candidates, [&](int percent) { progress.push_back(percent); }, 0);
        EXPECT_TRUE(log.has("Texture synthesis started.", Info));
        EXPECT_EQ(synthesizer.recorder.tries.size(), 49u);
        EXPECT_EQ(progress, (std::vector<int>{4, 20, 37, 54, 70, 87}));
    }

    // One position over a zero target that counts as filled, from three
    // constant grey layers: every candidate's error is the first layer's value.
    LayeredImage source;
    for (const char* name : {"A", "B", "C"})
        source.setLayer(name, new Image(16, 16, Gray));
    auto synthesizer = makeSynthesizer("Patch Based Blended", 8, 4, 48, 5);
    auto* p = static_cast<Params*>(synthesizer->params);
    p->useAllLayers = false;
    p->errorThreshold = 0.15f;
    EngineTest::LogRecorder log;
    auto runOnce = [&](float value) {
        std::fill(source.layers[0]->data, source.layers[0]->data + 256, value);
        synthesizer->setInputs(&source, 48, 48, nullptr, nullptr, nullptr);
        for (Image* layer : synthesizer->target->layers)
            layer->clear();
        ListedPositions destination({{10, 10}});
        CountingSource candidates;
        log.lines.clear();
        synthesizer->synthesize(&destination, &candidates, nullptr, 1);
        return candidates.draws;
    };
    // Only the first layer is compared, but the error is still divided by
    // the layer count: 0.3 / 3 passes 0.15 at the first try, 0.48 / 3 does
    // not in all five.
    EXPECT_EQ(runOnce(0.3f), 1);
    EXPECT_TRUE(log.has("0 patches out of 1 timed out", Info));
    EXPECT_EQ(runOnce(0.48f), 5);
    EXPECT_TRUE(log.has("1 patches out of 1 timed out", Info));
    // A NaN error is accepted at once and not counted as timed out.
    EXPECT_EQ(runOnce(std::numeric_limits<float>::quiet_NaN()), 1);
    EXPECT_TRUE(log.has("0 patches out of 1 timed out", Info));

    // Tries without end still stop at a cancel, after the position's progress.
    p->maxTries = UINT32_MAX;
    p->errorThreshold = 0.0f;
    std::fill(source.layers[0]->data, source.layers[0]->data + 256, 1.0f);
    synthesizer->setInputs(&source, 48, 48, nullptr, nullptr, nullptr);
    CancellingSource cancelling(*synthesizer, 5000);
    ListedPositions destination({{0, 15}, {0, 30}});
    std::vector<int> progress;
    log.lines.clear();
    synthesizer->synthesize(&destination, &cancelling, [&](int percent) { progress.push_back(percent); }, 1);
    EXPECT_LE(cancelling.remaining, 0);
    EXPECT_TRUE(log.has("0 patches out of 0 timed out", Info));
    EXPECT_EQ(progress, std::vector<int>{31}); // reported before the first try
}

TEST(Synthesizer, BadSettingsAreRefusedBeforeAnythingRuns)
{
    using Spoil = void (*)(Params&, LayeredImage&);
    const std::pair<const char*, Spoil> cases[] = {
        {"Patch size must be at least 1, but it is 0.", [](Params& p, LayeredImage&) { p.patchSize = 0; }},
        {"Patch boundary must not be negative, but it is -3.", [](Params& p, LayeredImage&) { p.patchBoundary = -3; }},
        {"Target size 0 x 96", [](Params& p, LayeredImage&) { p.targetWidth = 0; }},
        {"Target size 40000 x 96", [](Params& p, LayeredImage&) { p.targetWidth = 40000; }},
        {"Target size 20000 x 20000", [](Params& p, LayeredImage&) { p.targetWidth = p.targetHeight = 20000; }},
        {"makes patches of", [](Params& p, LayeredImage&) { p.patchSize = 2000000000; }},
        {"Source layer 'Height' is smaller than one pixel (0 x 0).",
         [](Params&, LayeredImage& in) { in.layers[2]->allocate(0, 0, Gray); }},
        {"The source has no layers.", [](Params&, LayeredImage& in) { in.deleteLayers(); }},
    };
    for (const auto& [expected, spoil] : cases) {
        auto input = EngineTest::makeSource(24, 24);
        auto synthesizer = makeSynthesizer("Patch Based Blended");
        synthesizer->setInputs(input.get(), 96, 96, nullptr, nullptr, nullptr);
        spoil(*static_cast<Params*>(synthesizer->params), *input);
        EngineTest::LogRecorder log;
        EXPECT_FALSE(synthesizer->checkSettings()) << expected;
        EXPECT_TRUE(log.anyContains(expected, Error)) << expected;
        PDG_GridAll destination;
        PSGBoundaryAll candidates;
        synthesizer->synthesize(&destination, &candidates, nullptr, 0);
        EXPECT_FALSE(log.has("Synthesizer started", Info)) << expected;
    }

    // An absurd output size is refused without allocating it.
    auto source = EngineTest::makeSource(24, 24);
    auto synthesizer = makeSynthesizer("Patch Based Cutout");
    EngineTest::LogRecorder log;
    synthesizer->setInputs(source.get(), 100000, 100000, nullptr, nullptr, nullptr);
    EXPECT_EQ(synthesizer->target, nullptr);
    EXPECT_EQ(log.count(Error), 1);
    synthesizer->source = nullptr;
    EXPECT_FALSE(synthesizer->checkSettings());
}

TEST(Synthesizer, LoopRulesForTriesCancelAndStartFilled)
{
    auto source = EngineTest::makeSource(40, 40);
    auto synthesizer = makeSynthesizer("Patch Based Blended");
    auto* p = static_cast<Params*>(synthesizer->params);
    synthesizer->setSeed(5);
    synthesizer->setInputs(source.get(), 96, 96, nullptr, nullptr, nullptr);
    PDG_GridAll destination;
    PSGBoundaryAll candidates;
    EngineTest::LogRecorder log;
    auto synthesize = [&](PixelDestGenerator& where, PixelSourceGenerator& from, int startFilled,
                          ImageSynthesizer::Progress progress = nullptr) {
        log.lines.clear();
        synthesizer->synthesize(&where, &from, progress, startFilled);
    };

    // maxTries 0: one try per position, each timed out above the threshold.
    p->maxTries = 0;
    p->errorThreshold = -1.0f;
    synthesize(destination, candidates, 0);
    EXPECT_TRUE(log.has("Synthesizer started", Info));
    EXPECT_TRUE(log.has("Texture synthesis finished.", Success));
    EXPECT_TRUE(log.has("49 patches out of 49 timed out", Info));
    EXPECT_TRUE(log.has("More than half of the patches timed out. Try using higher error or more patch tries!",
                        Warning));
    // No positions: 0 of 0 and no warning.
    NoPositions none;
    synthesize(none, candidates, 0);
    EXPECT_TRUE(log.has("0 patches out of 0 timed out", Info));
    EXPECT_EQ(log.count(Warning), 0);
    // A cancel during the tries of the first position: nothing is pasted.
    p->maxTries = 10;
    const Pixels before = pixelsOf(*synthesizer->target);
    CancellingSource cancelling(*synthesizer, 4);
    synthesize(destination, cancelling, 0);
    EXPECT_TRUE(log.has("0 patches out of 0 timed out", Info));
    EXPECT_TRUE(log.has("Texture synthesis finished.", Success));
    EXPECT_EQ(pixelsOf(*synthesizer->target), before);

    // startFilled 1 compares even the first patch with what is there.
    p->maxTries = 1;
    p->errorThreshold = 0.0f;
    std::vector<int> progress;
    synthesize(destination, candidates, 0, [&](int percent) { progress.push_back(percent); });
    EXPECT_TRUE(log.has("48 patches out of 49 timed out", Info));
    ASSERT_FALSE(progress.empty());
    EXPECT_EQ(std::adjacent_find(progress.begin(), progress.end(), std::greater_equal<int>()), progress.end());
    EXPECT_LE(progress.back(), 100);
    Image* kept = synthesizer->target->layers[0];
    synthesizer->setInputs(source.get(), 96, 96, nullptr, nullptr, nullptr);
    EXPECT_EQ(synthesizer->target->layers[0], kept); // same size and formats: reused
    synthesize(destination, candidates, 1);
    EXPECT_TRUE(log.has("49 patches out of 49 timed out", Info));
}

TEST(Synthesizer, LayersStayInRegisterAndTheOutputTiles)
{
    auto source = EngineTest::makeSource(48, 48);
    Image direction(8, 8, RGB), scale(8, 8, Gray);
    for (int i = 0; i < 64; ++i) {
        direction.data[3 * i] = std::sin(0.4f * float(i % 8 + 2 * (i / 8)));
        direction.data[3 * i + 1] = std::cos(0.4f * float(i % 8 + 2 * (i / 8)));
        scale.data[i] = 0.25f * float((i % 8 + i / 8) % 7);
    }
    for (const char* method : {"Patch Based Blended", "Patch Based Cutout"})
        for (bool guided : {false, true}) {
            SCOPED_TRACE(std::string(method) + (guided ? " guided" : ""));
            const Pixels out = run(*makeSynthesizer(method), *source, 17, guided ? &direction : nullptr,
                                   guided ? &scale : nullptr);
            const std::vector<float>&colour = out[0], &normal = out[1], &grey = out[2];
            float worst = 0.0f;
            for (int i = 0; i < 96 * 96; ++i) {
                worst = std::max(worst, std::fabs(grey[i] - EngineTest::greyOf(&colour[3 * i])));
                const float* n = &normal[3 * i];
                ASSERT_NEAR(std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]), 1.0f, 1e-4f);
            }
            EXPECT_LT(worst, 1e-5f);

            // Differences across the wrap-around seams are like those between interior neighbours.
            auto at = [&](int x, int y) { return grey[y * 96 + x]; };
            double interior = 0.0, seam = 0.0;
            for (int i = 0; i < 96; ++i) {
                seam += std::fabs(at(95, i) - at(0, i)) + std::fabs(at(i, 95) - at(i, 0));
                for (int j = 0; j < 95; ++j)
                    interior += std::fabs(at(j + 1, i) - at(j, i)) + std::fabs(at(i, j + 1) - at(i, j));
            }
            seam /= 2 * 96;
            interior /= 2 * 96 * 95;
            EXPECT_GT(interior, 0.0);
            EXPECT_LT(seam, 2.0 * interior);
        }
}

TEST(Synthesizer, FixedSeedReproducesOnAnyThreadCount)
{
    auto source = EngineTest::makeSource(80, 80);
    Image flat(4, 4, RGB); // (0, 0) everywhere: the same as no direction map
    const int threads = omp_get_max_threads();
    for (const char* method : {"Patch Based Blended", "Patch Based Cutout"}) {
        // Patches big enough (full size 210) for the engine to form thread teams.
        auto fresh = [&] { return makeSynthesizer(method, 150, 30, 256, 4); };
        omp_set_num_threads(1);
        const Pixels reference = run(*fresh(), *source, 1234);
        for (int n : {2, 5}) {
            omp_set_num_threads(n);
            EXPECT_EQ(run(*fresh(), *source, 1234), reference) << method << " threads " << n;
        }
        omp_set_num_threads(threads);
        EXPECT_EQ(run(*fresh(), *source, 1234, &flat), reference) << method;
        EXPECT_NE(run(*fresh(), *source, 1235), reference) << method;
    }
}

// FNV-1a over the bits of every layer.
uint64_t hashOf(const Pixels& pixels)
{
    uint64_t h = 1469598103934665603ull;
    for (const std::vector<float>& layer : pixels)
        for (float v : layer) {
            uint32_t bits;
            std::memcpy(&bits, &v, sizeof bits);
            for (int b = 0; b < 4; ++b)
                h = (h ^ ((bits >> (8 * b)) & 0xFFu)) * 1099511628211ull;
        }
    return h;
}

// Outputs of fixed-seed runs, recorded with the engine before candidates were
// evaluated in batches and stopped early: any change of the chosen candidates
// or the pasted pixels changes them.
TEST(Synthesizer, FixedSeedOutputIsUnchanged)
{
    auto source = EngineTest::makeSource(90, 80);
    Image turn(8, 8, RGB), grow(8, 8, Gray);
    for (int i = 0; i < 64; ++i) {
        turn.data[3 * i] = std::sin(0.3f * float(i));
        turn.data[3 * i + 1] = std::cos(0.3f * float(i));
        grow.data[i] = 0.5f + float(i % 8) / 8.0f;
    }
    struct Case { const char* method; bool guided; uint64_t expected; };
    // A deliberate change of the cutout paste changes its value.
    const Case cases[] = {{"Patch Based Blended", false, 843640964710394141ull},
                          {"Patch Based Cutout", false, 15129384706338480083ull},
                          {"Patch Based Blended", true, 11834031766832055060ull}};
    const int threads = omp_get_max_threads();
    for (const Case& c : cases)
        for (int n : {1, 2, 5}) {
            omp_set_num_threads(n);
            auto synthesizer = makeSynthesizer(c.method, 24, 8, 150, 20);
            static_cast<Params*>(synthesizer->params)->errorThreshold = 0.002f;
            const uint64_t h = hashOf(run(*synthesizer, *source, 77, c.guided ? &turn : nullptr,
                                          c.guided ? &grow : nullptr));
            EXPECT_EQ(h, c.expected) << c.method << (c.guided ? " guided" : "") << " threads " << n;
        }
    omp_set_num_threads(threads);
}

TEST(Synthesizer, OddButValidSettingsRun)
{
    // A source smaller than the patch, boundary 0 and a patch wider than the
    // target must run without reading outside any image.
    auto tiny = EngineTest::makeSource(9, 7);
    for (const char* method : {"Patch Based Blended", "Patch Based Cutout"})
        for (auto [size, boundary, target] : {std::tuple{16, 4, 40}, std::tuple{5, 0, 30}, std::tuple{30, 6, 20}}) {
            auto synthesizer = makeSynthesizer(method, size, boundary, target);
            const Pixels out = run(*synthesizer, *tiny, 3);
            EXPECT_TRUE(synthesizer->checkSettings());
            EXPECT_GT(std::accumulate(out[0].begin(), out[0].end(), 0.0) / out[0].size(), 0.05)
                << method << " " << size << " " << boundary;
        }
}

TEST(Synthesizer, FactoryCloneAndInputs)
{
    EXPECT_EQ(createSynthesizer("Patch Based Quilted"), nullptr);
    auto cutout = makeSynthesizer("Patch Based Cutout", 33, 7);
    static_cast<CutoutPatchSynthesizer::CutoutPatchSynthesizerParams*>(cutout->params)->feather = 9;
    std::unique_ptr<ImageSynthesizer> copy(cutout->clone());
    auto* copied = dynamic_cast<CutoutPatchSynthesizer::CutoutPatchSynthesizerParams*>(copy->params);
    ASSERT_NE(copied, nullptr);
    EXPECT_TRUE(copied->patchSize == 33 && copied->patchBoundary == 7 && copied->feather == 9);
    EXPECT_EQ(copy->target, nullptr);

    // Different sizes or layer formats make a new target; reset frees it.
    auto source = EngineTest::makeSource(16, 16);
    source->layers[0]->fileType = 3;
    cutout->setInputs(source.get(), 32, 24, nullptr, nullptr, nullptr);
    ASSERT_NE(cutout->target, nullptr);
    EXPECT_EQ(cutout->target->names, source->names);
    const Image& colour = *cutout->target->layers[0];
    EXPECT_TRUE(colour.width == 32 && colour.height == 24 && colour.fileType == 3);
    EXPECT_EQ(cutout->target->layers[1]->format, Normal);
    source->layers[2]->allocate(16, 16, RGB);
    cutout->setInputs(source.get(), 32, 24, nullptr, nullptr, nullptr);
    EXPECT_EQ(cutout->target->layers[2]->format, RGB);
    cutout->reset();
    EXPECT_EQ(cutout->target, nullptr);
}
