#include "CutoutPatchSynthesizer.h"
#include "EngineTestImages.h"
#include "PDG_GridAll.h"
#include "PSGBoundaryAll.h"
#include "SynthesizerFactory.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cstring>
#include <functional>
#include <numeric>

using namespace Velmor;
using Params = ImageSynthesizer::PatchSynthesizerParams;
using Pixels = std::vector<std::vector<float>>;

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

} // namespace

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
