#include "CutoutPatchSynthesizer.h"
#include "EngineTestImages.h"
#include "PDG_GridAll.h"
#include "PSGBoundaryAll.h"
#include "SynthesizerFactory.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <functional>
#include <memory>
#include <vector>

using namespace Velmor;
using Params = ImageSynthesizer::PatchSynthesizerParams;

namespace {

std::unique_ptr<ImageSynthesizer> makeSynthesizer(const char* method, int patchSize = 16, int boundary = 4)
{
    std::unique_ptr<ImageSynthesizer> synthesizer(createSynthesizer(method));
    auto* p = static_cast<Params*>(synthesizer->params);
    p->patchSize = patchSize;
    p->patchBoundary = boundary;
    p->targetWidth = 96;
    p->targetHeight = 96;
    return synthesizer;
}

std::vector<std::vector<float>> pixelsOf(const LayeredImage& image)
{
    std::vector<std::vector<float>> out;
    for (const Image* layer : image.layers)
        out.emplace_back(layer->data, layer->data + layer->floatCount());
    return out;
}

// One run over a fresh 96 x 96 target with a fixed seed.
std::vector<std::vector<float>> runOnce(const char* method, LayeredImage& source, uint32_t seed,
                                        Image* direction = nullptr, Image* scale = nullptr)
{
    auto synthesizer = makeSynthesizer(method);
    synthesizer->setSeed(seed);
    synthesizer->setInputs(&source, 96, 96, direction, scale, nullptr);
    PDG_GridAll destination;
    PSGBoundaryAll candidates;
    synthesizer->synthesize(&destination, &candidates, nullptr, 0);
    return pixelsOf(*synthesizer->target);
}

// Destination generator that yields nothing.
class NoPositions : public PixelDestGenerator
{
public:
    bool next(int32_t&, int32_t&) override { return false; }
};

// Source generator that asks for cancellation at its n-th position.
class CancellingSource : public PSGBoundaryAll
{
public:
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
    auto source = EngineTest::makeSource(24, 24);
    struct Case { const char* expected; std::function<void(ImageSynthesizer&, LayeredImage&)> spoil; };
    const std::vector<Case> cases = {
        {"Patch size must be at least 1, but it is 0.", [](ImageSynthesizer& s, LayeredImage&) {
             static_cast<Params*>(s.params)->patchSize = 0; }},
        {"Patch boundary must not be negative, but it is -3.", [](ImageSynthesizer& s, LayeredImage&) {
             static_cast<Params*>(s.params)->patchBoundary = -3; }},
        {"Target size 0 x 96", [](ImageSynthesizer& s, LayeredImage&) { s.params->targetWidth = 0; }},
        {"Target size 40000 x 96", [](ImageSynthesizer& s, LayeredImage&) { s.params->targetWidth = 40000; }},
        {"Target size 20000 x 20000", [](ImageSynthesizer& s, LayeredImage&) {
             s.params->targetWidth = s.params->targetHeight = 20000; }},
        {"makes patches of", [](ImageSynthesizer& s, LayeredImage&) {
             static_cast<Params*>(s.params)->patchSize = 2000000000; }},
        {"Source layer 'Height' is smaller than one pixel (0 x 0).", [](ImageSynthesizer&, LayeredImage& in) {
             in.layers[2]->allocate(0, 0, Gray); }},
        {"The source has no layers.", [](ImageSynthesizer&, LayeredImage& in) { in.deleteLayers(); }},
    };
    for (const Case& c : cases) {
        auto input = EngineTest::makeSource(24, 24);
        auto synthesizer = makeSynthesizer("Patch Based Blended");
        synthesizer->setInputs(input.get(), 96, 96, nullptr, nullptr, nullptr);
        c.spoil(*synthesizer, *input);
        EngineTest::LogRecorder log;
        EXPECT_FALSE(synthesizer->checkSettings()) << c.expected;
        EXPECT_TRUE(log.anyContains(c.expected, Error)) << c.expected;
        PDG_GridAll destination;
        PSGBoundaryAll candidates;
        synthesizer->synthesize(&destination, &candidates, nullptr, 0);
        EXPECT_FALSE(log.has("Synthesizer started", Info)) << c.expected;
    }

    // An absurd output size is refused without allocating it.
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
    PDG_GridAll destination;
    PSGBoundaryAll candidates;

    // maxTries 0: one try per position, each timed out above the threshold.
    p->maxTries = 0;
    p->errorThreshold = -1.0f;
    synthesizer->setInputs(source.get(), 96, 96, nullptr, nullptr, nullptr);
    {
        EngineTest::LogRecorder log;
        synthesizer->synthesize(&destination, &candidates, nullptr, 0);
        EXPECT_TRUE(log.has("Synthesizer started", Info));
        EXPECT_TRUE(log.has("Texture synthesis finished.", Success));
        EXPECT_TRUE(log.has("49 patches out of 49 timed out", Info));
        EXPECT_TRUE(log.has("More than half of the patches timed out. Try using higher error or more patch tries!",
                            Warning));
    }
    // No positions: 0 of 0 and no warning.
    {
        EngineTest::LogRecorder log;
        NoPositions none;
        synthesizer->synthesize(&none, &candidates, nullptr, 0);
        EXPECT_TRUE(log.has("0 patches out of 0 timed out", Info));
        EXPECT_EQ(log.count(Warning), 0);
    }
    // A cancel during the tries of the first position: nothing is pasted.
    {
        p->maxTries = 10;
        const auto before = pixelsOf(*synthesizer->target);
        EngineTest::LogRecorder log;
        CancellingSource cancelling(*synthesizer, 4);
        synthesizer->synthesize(&destination, &cancelling, nullptr, 0);
        EXPECT_TRUE(log.has("0 patches out of 0 timed out", Info));
        EXPECT_TRUE(log.has("Texture synthesis finished.", Success));
        EXPECT_EQ(pixelsOf(*synthesizer->target), before);
    }
    // startFilled 1 compares even the first patch with what is there.
    p->maxTries = 1;
    p->errorThreshold = 0.0f;
    std::vector<int> progress;
    {
        EngineTest::LogRecorder log;
        synthesizer->synthesize(&destination, &candidates, [&](int percent) { progress.push_back(percent); }, 0);
        EXPECT_TRUE(log.has("48 patches out of 49 timed out", Info));
    }
    ASSERT_FALSE(progress.empty());
    for (size_t i = 1; i < progress.size(); ++i)
        EXPECT_GT(progress[i], progress[i - 1]);
    EXPECT_LE(progress.back(), 100);
    Image* kept = synthesizer->target->layers[0];
    synthesizer->setInputs(source.get(), 96, 96, nullptr, nullptr, nullptr);
    EXPECT_EQ(synthesizer->target->layers[0], kept); // same size and formats: reused
    {
        EngineTest::LogRecorder log;
        synthesizer->synthesize(&destination, &candidates, nullptr, 1);
        EXPECT_TRUE(log.has("49 patches out of 49 timed out", Info));
    }
}

TEST(Synthesizer, LayersStayInRegisterAndTheOutputTiles)
{
    auto source = EngineTest::makeSource(48, 48);
    Image direction(8, 8, RGB);
    Image scale(8, 8, Gray);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const float angle = 0.4f * float(x + 2 * y);
            direction.pixelAt(x, y)[0] = std::sin(angle);
            direction.pixelAt(x, y)[1] = std::cos(angle);
            scale.pixelAt(x, y)[0] = 0.25f * float((x + y) % 7);
        }
    for (const char* method : {"Patch Based Blended", "Patch Based Cutout"}) {
        for (bool guided : {false, true}) {
            const auto out = runOnce(method, *source, 17, guided ? &direction : nullptr, guided ? &scale : nullptr);
            const std::vector<float>& colour = out[0];
            const std::vector<float>& grey = out[2];
            const std::vector<float>& normal = out[1];
            float worst = 0.0f;
            for (int i = 0; i < 96 * 96; ++i) {
                worst = std::max(worst, std::fabs(grey[i] - EngineTest::greyOf(&colour[3 * i])));
                ASSERT_NEAR(std::sqrt(normal[3 * i] * normal[3 * i] + normal[3 * i + 1] * normal[3 * i + 1]
                                      + normal[3 * i + 2] * normal[3 * i + 2]),
                            1.0f, 1e-4f);
            }
            EXPECT_LT(worst, 1e-5f) << method << " guided " << guided;

            // Differences across the wrap-around seams are like those between
            // interior neighbours.
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
            EXPECT_LT(seam, 2.0 * interior) << method << " guided " << guided;
        }
    }
}

TEST(Synthesizer, FixedSeedReproducesOnAnyThreadCount)
{
    auto source = EngineTest::makeSource(80, 80);
    Image flat(4, 4, RGB); // (0, 0) everywhere: the same as no direction map
    const int threads = omp_get_max_threads();
    // Patches big enough (full size 210) for the engine to form thread teams.
    auto run = [&](const char* method, uint32_t seed, Image* direction) {
        auto synthesizer = makeSynthesizer(method, 150, 30);
        static_cast<Params*>(synthesizer->params)->maxTries = 4;
        synthesizer->setSeed(seed);
        synthesizer->setInputs(source.get(), 256, 256, direction, nullptr, nullptr);
        PDG_GridAll destination;
        PSGBoundaryAll candidates;
        synthesizer->synthesize(&destination, &candidates, nullptr, 0);
        return pixelsOf(*synthesizer->target);
    };
    for (const char* method : {"Patch Based Blended", "Patch Based Cutout"}) {
        omp_set_num_threads(1);
        const auto reference = run(method, 1234, nullptr);
        for (int n : {2, 5}) {
            omp_set_num_threads(n);
            EXPECT_EQ(run(method, 1234, nullptr), reference) << method << " threads " << n;
        }
        omp_set_num_threads(threads);
        EXPECT_EQ(run(method, 1234, &flat), reference) << method;
        EXPECT_NE(run(method, 1235, nullptr), reference) << method;
    }
    omp_set_num_threads(threads);
}

TEST(Synthesizer, OddButValidSettingsRun)
{
    // A source smaller than the patch, boundary 0 and a patch wider than the
    // target must run without reading outside any image.
    auto tiny = EngineTest::makeSource(9, 7);
    for (const char* method : {"Patch Based Blended", "Patch Based Cutout"}) {
        for (auto [size, boundary, target] : {std::tuple{16, 4, 40}, std::tuple{5, 0, 30}, std::tuple{30, 6, 20}}) {
            auto synthesizer = makeSynthesizer(method, size, boundary);
            synthesizer->params->targetWidth = synthesizer->params->targetHeight = target;
            synthesizer->setSeed(3);
            synthesizer->setInputs(tiny.get(), target, target, nullptr, nullptr, nullptr);
            ASSERT_TRUE(synthesizer->checkSettings());
            PDG_GridAll destination;
            PSGBoundaryAll candidates;
            synthesizer->synthesize(&destination, &candidates, nullptr, 0);
            const auto out = pixelsOf(*synthesizer->target);
            double sum = 0.0;
            for (float v : out[0])
                sum += v;
            EXPECT_GT(sum / out[0].size(), 0.05) << method << " " << size << " " << boundary;
        }
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
    EXPECT_EQ(copied->patchSize, 33);
    EXPECT_EQ(copied->patchBoundary, 7);
    EXPECT_EQ(copied->feather, 9);
    EXPECT_EQ(copy->target, nullptr);

    // Different sizes or layer formats make a new target; reset frees it.
    auto source = EngineTest::makeSource(16, 16);
    source->layers[0]->fileType = 3;
    cutout->setInputs(source.get(), 32, 24, nullptr, nullptr, nullptr);
    ASSERT_NE(cutout->target, nullptr);
    EXPECT_EQ(cutout->target->names, source->names);
    EXPECT_EQ(cutout->target->layers[0]->width, 32u);
    EXPECT_EQ(cutout->target->layers[0]->height, 24u);
    EXPECT_EQ(cutout->target->layers[1]->format, Normal);
    EXPECT_EQ(cutout->target->layers[0]->fileType, 3u);
    source->layers[2]->allocate(16, 16, RGB);
    LayeredImage* before = cutout->target;
    cutout->setInputs(source.get(), 32, 24, nullptr, nullptr, nullptr);
    EXPECT_EQ(cutout->target->layers[2]->format, RGB);
    (void)before;
    cutout->reset();
    EXPECT_EQ(cutout->target, nullptr);
}
