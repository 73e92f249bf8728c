#include "ProjectTestSupport.h"
#include "SurfaceSynthesis.h"
#include "SynthesisTestSupport.h"

#include <gtest/gtest.h>

using namespace Velmor;

namespace {

// A 32 x 32 surface with a colour and a roughness layer, synthesized to
// 48 x 40 with 8-pixel patches: 42 grid positions on the target, 25 on the
// input, 9 of them along the input's wrapping seams.
struct SurfaceFixture
{
    SurfaceFixture()
    {
        color = addImageTexture(store, "color", patternImage(32, 32, RGB));
        rough = addImageTexture(store, "rough", patternImage(32, 32, Gray, 1.0f));
        surface = store.addSurface("Rock");
        surface->addLayer() = {"Color", color, ProjectData::LayerMode::Color};
        surface->addLayer() = {"Roughness", rough, ProjectData::LayerMode::Roughness};
        smallPatches(*surface, 48, 40);
        context().seed = 7;
    }

    SurfaceSynthesisContext& context() { return *surface->synthesisContext; }
    LayeredImage* output() { return surface->synthesizer()->target; }

    ProjectData store;
    ProjectData::TextureData* color = nullptr;
    ProjectData::TextureData* rough = nullptr;
    ProjectData::SurfaceData* surface = nullptr;
};

const int gridOnTarget = 42;
const int gridOnInput = 25;
const int seamsOfInput = 9;

} // namespace

TEST(SurfaceSynthesis, SeamlessWithoutGuidanceRunsOnceAtTargetSize)
{
    SurfaceFixture f;
    f.surface->makeInputSeamless = true;
    f.surface->directionMap = f.store.addDirectionMap();
    f.surface->useDirectionMap = false; // a map that is not used is no guidance
    LogCapture log;
    EXPECT_TRUE(synthesizeSurface(f.context(), {}));

    EXPECT_EQ(log.count(Info, "Synthesizer started"), 1);
    ASSERT_FALSE(log.messages.empty());
    EXPECT_EQ(log.messages.front().first, QStringLiteral("\nSynthesizing surface Rock"));
    EXPECT_EQ(log.messages.front().second, int(Info));
    EXPECT_EQ(passPatchTotals(log), std::vector<int>{gridOnTarget});
    EXPECT_EQ(log.count(Error), 0);

    LayeredImage* out = f.output();
    ASSERT_NE(out, nullptr);
    ASSERT_EQ(out->layerCount(), 2u);
    EXPECT_EQ(out->names, (std::vector<std::string>{"Color", "Roughness"}));
    EXPECT_EQ(out->layers[0]->format, RGB);
    EXPECT_EQ(out->layers[1]->format, Gray);
    for (const Image* layer : out->layers) {
        EXPECT_EQ(layer->width, 48u);
        EXPECT_EQ(layer->height, 40u);
    }
    // The synthesizer keeps no pointer to the freed input.
    EXPECT_EQ(f.surface->synthesizer()->source, nullptr);
    EXPECT_EQ(f.context().currentSynthesizer.load(), nullptr);

    // The context's seed reaches the synthesizer: the same seed repeats the
    // output, another one changes it.
    const Image first = *out->layers[0];
    synthesizeSurface(f.context(), {});
    EXPECT_TRUE(samePixels(*f.output()->layers[0], first));
    f.context().seed = 8;
    synthesizeSurface(f.context(), {});
    EXPECT_FALSE(samePixels(*f.output()->layers[0], first));
}

TEST(SurfaceSynthesis, GuidedSeamlessRepairsTheSeamsBeforeTheMainPass)
{
    SurfaceFixture f;
    f.surface->makeInputSeamless = true;
    f.surface->scaleMap = f.store.addScaleMap();
    f.surface->useDirectionMap = false;
    const Image colorBefore = f.color->image;
    std::vector<ImageSynthesizer*> running;
    std::vector<int> progress;
    LogCapture log;
    synthesizeSurface(f.context(), [&](int value) {
        running.push_back(f.context().currentSynthesizer.load());
        progress.push_back(value);
    });

    // The seam pass visits only the input's first row and column; the main
    // pass the whole target.
    EXPECT_EQ(passPatchTotals(log), (std::vector<int>{seamsOfInput, gridOnTarget}));
    ASSERT_FALSE(running.empty());
    EXPECT_NE(running.front(), f.surface->synthesizer()); // the clone repairs
    EXPECT_NE(running.front(), nullptr);
    EXPECT_EQ(running.back(), f.surface->synthesizer());
    // One bar over both passes: the repair takes the input's share of the
    // pixels (32 x 32 of 32 x 32 + 48 x 40, about a third), then it only rises.
    for (size_t i = 1; i < progress.size(); ++i)
        EXPECT_GT(progress[i], progress[i - 1]);
    ASSERT_FALSE(progress.empty());
    EXPECT_LT(progress.front(), 34);
    EXPECT_GE(progress.back(), 90);
    ASSERT_NE(f.output(), nullptr);
    EXPECT_EQ(f.output()->layers[0]->width, 48u);
    EXPECT_EQ(f.output()->layers[1]->height, 40u);
    // The repair works on a copy, never on the texture itself.
    EXPECT_TRUE(samePixels(f.color->image, colorBefore));
    EXPECT_EQ(f.context().currentSynthesizer.load(), nullptr);
}

TEST(SurfaceSynthesis, MaskedSurfaceRepairsOverTheWholeCopyWithMaskedSources)
{
    SurfaceFixture f;
    Image mask = constantImage(32, 32, RGB, 1.0f);
    for (uint64_t i = 0; i < mask.pixelCount(); ++i)
        mask.data[3 * i + 1] = 0.0f; // channel 1 excludes everything
    f.surface->masked = true;
    f.surface->maskTexture = addImageTexture(f.store, "mask", std::move(mask));
    f.surface->maskChannel = 0;
    f.surface->makeInputSeamless = true;
    f.surface->directionMap = f.store.addDirectionMap();

    {
        LogCapture log;
        synthesizeSurface(f.context(), {});
        // The repair covers the whole input on the grid and prepares the
        // mask; the main pass reads the repaired copy, which has no mask.
        EXPECT_EQ(passPatchTotals(log), (std::vector<int>{gridOnInput, gridOnTarget}));
        EXPECT_EQ(log.count(Info, "Preprocessing surface mask."), 1);
        EXPECT_EQ(log.count(Error), 0);
        ASSERT_NE(f.output(), nullptr);
        EXPECT_EQ(f.output()->layers[0]->width, 48u);
    }
    {
        // The mask channel is handed on: channel 1 leaves no source position.
        f.surface->maskChannel = 1;
        f.surface->makeInputSeamless = false;
        LogCapture log;
        synthesizeSurface(f.context(), {});
        EXPECT_EQ(log.count(Error, "Cannot find suitable source pixels"), 1);
        EXPECT_EQ(passPatchTotals(log), std::vector<int>{gridOnTarget});
    }
}

TEST(SurfaceSynthesis, CancelDuringTheRepairNeverStartsTheMainPass)
{
    SurfaceFixture f;
    f.surface->makeInputSeamless = true;
    f.surface->directionMap = f.store.addDirectionMap();
    std::vector<ImageSynthesizer*> running;
    {
        LogCapture log;
        EXPECT_FALSE(synthesizeSurface(f.context(), [&](int) {
            running.push_back(f.context().currentSynthesizer.load());
            requestCancel(f.context());
        }));
        EXPECT_EQ(log.count(Info, "Synthesizer started"), 1);
        ASSERT_EQ(passPatchTotals(log).size(), 1u);
        EXPECT_LT(passPatchTotals(log)[0], seamsOfInput);
    }
    ASSERT_FALSE(running.empty());
    for (ImageSynthesizer* synthesizer : running)
        EXPECT_NE(synthesizer, f.surface->synthesizer());
    EXPECT_EQ(f.output(), nullptr); // the surface's synthesizer was never prepared
    EXPECT_EQ(f.context().currentSynthesizer.load(), nullptr);
    EXPECT_TRUE(f.context().cancelRequested.load());

    // A cancel before the run starts is forgotten: each run starts afresh.
    LogCapture log;
    synthesizeSurface(f.context(), {});
    EXPECT_EQ(passPatchTotals(log), (std::vector<int>{seamsOfInput, gridOnTarget}));
    ASSERT_NE(f.output(), nullptr);
}

TEST(SurfaceSynthesis, UnusableSurfacesAreRefusedWithAMessage)
{
    SurfaceFixture f;
    {
        // A layer without a texture.
        f.surface->addLayer().name = "Empty";
        LogCapture log;
        EXPECT_FALSE(synthesizeSurface(f.context(), {}));
        EXPECT_EQ(log.count(Error, "'Empty'"), 1);
        EXPECT_EQ(log.count(Info, "Synthesizer started"), 0);
        EXPECT_EQ(f.output(), nullptr);
        f.surface->layers.pop_back();
    }
    {
        // A context without a surface does nothing.
        SurfaceSynthesisContext empty(nullptr);
        LogCapture log;
        synthesizeSurface(empty, {});
        EXPECT_TRUE(log.messages.empty());
    }
}
