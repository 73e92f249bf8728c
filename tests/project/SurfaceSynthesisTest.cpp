#include "ProjectTestSupport.h"
#include "SurfaceSynthesis.h"

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
        surface->addLayer() = {"Color", color, ProjectData::LayerMode::Color};
        surface->addLayer() = {"Roughness", addImageTexture(store, "rough", patternImage(32, 32, Gray, 1.0f)),
                               ProjectData::LayerMode::Roughness};
        smallPatches(*surface, 48, 40);
        surface->makeInputSeamless = true;
        surface->directionMap = store.addDirectionMap();
        context().seed = 7;
    }

    SurfaceSynthesisContext& context() { return *surface->synthesisContext; }
    LayeredImage* output() { return surface->synthesizer()->target; }

    ProjectData store;
    ProjectData::TextureData* color = addImageTexture(store, "color", patternImage(32, 32, RGB));
    ProjectData::SurfaceData* surface = store.addSurface("Rock");
};

const int gridOnTarget = 42, gridOnInput = 25, seamsOfInput = 9;

} // namespace

TEST(SurfaceSynthesis, SeamlessWithoutGuidanceRunsOnceAtTargetSize)
{
    SurfaceFixture f;
    f.surface->useDirectionMap = false; // a map that is not used is no guidance
    LogCapture log;
    EXPECT_TRUE(synthesizeSurface(f.context(), {}));
    EXPECT_EQ(passPatchTotals(log), std::vector<int>{gridOnTarget});
    EXPECT_EQ(log.count(Error), 0);

    LayeredImage* out = f.output();
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->layers[1]->format, Gray);
    for (const Image* layer : out->layers)
        EXPECT_EQ(std::make_pair(layer->width, layer->height), std::make_pair(48u, 40u));
    EXPECT_EQ(f.surface->synthesizer()->source, nullptr); // no pointer to the freed input

    // The context's seed reaches the synthesizer.
    const Image first = *out->layers[0];
    f.context().seed = 8;
    synthesizeSurface(f.context(), {});
    EXPECT_FALSE(samePixels(*f.output()->layers[0], first));
}

TEST(SurfaceSynthesis, GuidedSeamlessRepairsTheSeamsBeforeTheMainPass)
{
    SurfaceFixture f;
    f.surface->useDirectionMap = false; // guided by a scale map instead
    f.surface->scaleMap = f.store.addScaleMap();
    const Image colorBefore = f.color->image;
    std::vector<ImageSynthesizer*> running;
    std::vector<int> progress;
    LogCapture log;
    synthesizeSurface(f.context(), [&](int value) {
        running.push_back(f.context().currentSynthesizer.load());
        progress.push_back(value);
    });

    // The seam pass visits only the input's first row and column.
    EXPECT_EQ(passPatchTotals(log), (std::vector<int>{seamsOfInput, gridOnTarget}));
    ASSERT_FALSE(running.empty());
    EXPECT_NE(running.front(), f.surface->synthesizer()); // the clone repairs
    EXPECT_EQ(running.back(), f.surface->synthesizer());
    // One bar over both passes; the repair's share is its pixels' (about a third).
    EXPECT_TRUE(strictlyRising(progress));
    EXPECT_LT(progress.front(), 34);
    EXPECT_GE(progress.back(), 90);
    // The repair works on a copy, never on the texture itself.
    EXPECT_TRUE(samePixels(f.color->image, colorBefore));
}

TEST(SurfaceSynthesis, MaskedSurfaceRepairsOverTheWholeCopyWithMaskedSources)
{
    SurfaceFixture f;
    Image mask = constantImage(32, 32, RGB, 1.0f);
    for (uint64_t i = 0; i < mask.pixelCount(); ++i)
        mask.data[3 * i + 1] = 0.0f; // channel 1 excludes everything
    f.surface->masked = true;
    f.surface->maskTexture = addImageTexture(f.store, "mask", std::move(mask));
    LogCapture repair;
    synthesizeSurface(f.context(), {});
    // The repair covers the whole input, masked; the main pass reads the unmasked copy.
    EXPECT_EQ(passPatchTotals(repair), (std::vector<int>{gridOnInput, gridOnTarget}));
    EXPECT_EQ(repair.count(Info, "Preprocessing surface mask."), 1);
    EXPECT_EQ(repair.count(Error), 0);
    // The mask channel is handed on: channel 1 leaves no source position.
    f.surface->maskChannel = 1;
    f.surface->makeInputSeamless = false;
    LogCapture log;
    synthesizeSurface(f.context(), {});
    EXPECT_EQ(log.count(Error, "Cannot find suitable source pixels"), 1);
    EXPECT_EQ(passPatchTotals(log), std::vector<int>{gridOnTarget});
}

TEST(SurfaceSynthesis, CancelDuringTheRepairNeverStartsTheMainPass)
{
    SurfaceFixture f;
    std::vector<ImageSynthesizer*> running;
    LogCapture cancelled;
    EXPECT_FALSE(synthesizeSurface(f.context(), [&](int) {
        running.push_back(f.context().currentSynthesizer.load());
        requestCancel(f.context());
    }));
    ASSERT_EQ(passPatchTotals(cancelled).size(), 1u);
    EXPECT_LT(passPatchTotals(cancelled)[0], seamsOfInput);
    ASSERT_FALSE(running.empty());
    for (ImageSynthesizer* synthesizer : running)
        EXPECT_NE(synthesizer, f.surface->synthesizer());
    EXPECT_EQ(f.output(), nullptr); // the surface's synthesizer was never prepared
    EXPECT_EQ(f.context().currentSynthesizer.load(), nullptr);

    // The next run starts afresh: the old cancel does not stop it.
    LogCapture log;
    EXPECT_TRUE(f.context().cancelRequested);
    EXPECT_TRUE(synthesizeSurface(f.context(), {}));
    EXPECT_EQ(passPatchTotals(log), (std::vector<int>{seamsOfInput, gridOnTarget}));
}

TEST(SurfaceSynthesis, UnusableSurfacesAreRefusedWithAMessage)
{
    SurfaceFixture f;
    f.surface->addLayer().name = "Empty"; // a layer without a texture
    LogCapture log;
    EXPECT_FALSE(synthesizeSurface(f.context(), {}));
    EXPECT_EQ(log.count(Error, "'Empty'"), 1);
    EXPECT_EQ(log.count(Info, "Synthesizer started"), 0);
    EXPECT_EQ(f.output(), nullptr);

    // A texture whose file failed to load is refused, naming it and its file.
    f.surface->layers.pop_back();
    ProjectData::TextureData* broken = f.surface->layers[0].texture;
    broken->loadFailed = true;
    broken->path = "/nowhere/bark.png";
    EXPECT_FALSE(synthesizeSurface(f.context(), {}));
    EXPECT_EQ(log.count(Error, QStringLiteral("Texture '%1' (/nowhere/bark.png) could not be loaded")
                                   .arg(QString::fromStdString(broken->name))), 1);
    EXPECT_EQ(f.output(), nullptr);
    ProjectData store;
    EXPECT_TRUE(store.addTexture("/nowhere/missing.png")->loadFailed);

    // A context without a surface does nothing.
    const size_t before = log.messages.size();
    SurfaceSynthesisContext empty(nullptr);
    synthesizeSurface(empty, {});
    EXPECT_EQ(log.messages.size(), before);
}
