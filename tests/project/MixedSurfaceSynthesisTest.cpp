#include "MixedSurfaceSynthesis.h"
#include "ProjectTestSupport.h"
#include "SurfaceSynthesis.h"

#include <gtest/gtest.h>

using namespace Velmor;

namespace {

// White and black surfaces with a colour and a normal layer each, mixed at
// 24 x 20 through a 16 x 16 grey mask; filled, not synthesized, by default.
struct MixedFixture
{
    MixedFixture()
    {
        addLayer(*white, "Color", patternImage(12, 10, RGB, 0.0f));
        addLayer(*white, "Normal", patternImage(12, 10, Normal, 0.5f));
        addLayer(*black, "Color", patternImage(8, 8, RGB, 2.0f));
        addLayer(*black, "Normal", patternImage(8, 8, Normal, 3.0f));
        mixed->whiteSurface = white;
        mixed->blackSurface = black;
        mixed->maskTexture = addImageTexture(store, "mask", constantImage(16, 16, Gray, 1.0f));
        mixed->synthesizeMask = mixed->synthesizeWhiteSurface = mixed->synthesizeBlackSurface = false;
        for (ProjectData::SurfaceData* surface : {static_cast<ProjectData::SurfaceData*>(mixed), white, black})
            smallPatches(*surface, 24, 20);
        context().seed = 3;
    }

    void addLayer(ProjectData::SurfaceData& surface, const std::string& name, Image image)
    {
        const auto mode = image.format == Normal ? ProjectData::LayerMode::Normal : ProjectData::LayerMode::Color;
        surface.addLayer() = {name, addImageTexture(store, surface.name + name, std::move(image)), mode};
    }

    bool run(const ImageSynthesizer::Progress& progress = {}) { return synthesizeSurface(context(), progress); }
    SurfaceSynthesisContext& context() { return *mixed->synthesisContext; }
    const Image& out(size_t layer = 0) { return *mixed->synthesizer()->target->layers[layer]; }
    const Image& whiteOut(size_t layer = 0) { return *context().whiteResult->layers[layer]; }
    const Image& blackOut(size_t layer = 0) { return *context().blackResult->layers[layer]; }
    Image& mask() { return mixed->maskTexture->image; }

    ProjectData store;
    ProjectData::SurfaceData* white = store.addSurface("White");
    ProjectData::SurfaceData* black = store.addSurface("Black");
    ProjectData::MixedSurfaceData* mixed = store.addMixedSurface("Mix");
};

} // namespace

TEST(MixedSurfaceSynthesis, LinearFillInterpolates)
{
    Image source(3, 2, Gray), smooth(6, 4, Gray);
    for (int i = 0; i < 6; ++i)
        source.data[i] = float(i + 1);
    fillFromSource(source, smooth, false, Linear);
    EXPECT_FLOAT_EQ(smooth.pixelAt(1, 0)[0], 1.5f);
}

TEST(MixedSurfaceSynthesis, PureMasksReproduceOneSurfaceExactly)
{
    MixedFixture f;
    f.mixed->tileWhiteSurface = true;
    LogCapture log;
    EXPECT_TRUE(f.run());
    const std::vector<std::pair<QString, int>> phases = {
        {"\nSynthesizing surface Mix", Info},
        {"MixedSurface Phase 1/4: filling mask.", Info},
        {"MixedSurface Phase 2/4: filling white surface.", Info},
        {"MixedSurface Phase 3/4: filling black surface.", Info},
        {"MixedSurface Phase 4/4: merging surfaces.", Info},
        {"MixedSurface synthetize finished.", Success}};
    EXPECT_EQ(log.messages, phases);

    // All-white mask: the output is the (tiled) white surface, bit for bit.
    ASSERT_EQ(f.mixed->synthesizer()->target->names, (std::vector<std::string>{"Color", "Normal"}));
    for (size_t i = 0; i < 2; ++i)
        EXPECT_TRUE(samePixels(f.out(i), f.whiteOut(i))) << i;
    const Image& whiteColor = f.white->layers[0].texture->image; // 12 x 10; pixelAt wraps like tiling
    for (int32_t i = 0; i < 24 * 20; ++i)
        ASSERT_EQ(f.out().pixelAt(i % 24, i / 24)[2], whiteColor.pixelAt(i % 24, i / 24)[2]) << i;

    // Half: the average, with normals of unit length.
    f.mask() = constantImage(16, 16, Gray, 0.5f);
    f.run();
    EXPECT_FLOAT_EQ(f.out().pixelAt(5, 7)[1], 0.5f * (f.whiteOut().pixelAt(5, 7)[1] + f.blackOut().pixelAt(5, 7)[1]));
    const Image& n = f.out(1);
    for (uint64_t i = 0; i < n.pixelCount(); ++i) {
        const float* p = n.data + 3 * i;
        ASSERT_NEAR(p[0] * p[0] + p[1] * p[1] + p[2] * p[2], 1.0f, 1e-5f) << i;
    }
}

TEST(MixedSurfaceSynthesis, FrozenResultsAreKeptUnlessIncomplete)
{
    MixedFixture f;
    f.mixed->freezeMask = true;
    f.run();
    const LayeredImage* keptMask = f.context().maskResult.get();
    ASSERT_NE(keptMask, nullptr);

    // The frozen (white) mask is kept though its texture turned black; white is remade.
    f.mask() = constantImage(16, 16, Gray, 0.0f);
    f.white->layers[0].texture->image = constantImage(12, 10, RGB, 0.25f);
    LogCapture log;
    f.run();
    EXPECT_EQ(log.count(Info, "Phase 1/4"), 0);
    EXPECT_EQ(f.context().maskResult.get(), keptMask);
    EXPECT_TRUE(samePixels(f.whiteOut(), constantImage(24, 20, RGB, 0.25f)));
    EXPECT_TRUE(samePixels(f.out(), f.whiteOut()));

    // Unfrozen, the mask is made again from the (now black) texture.
    f.mixed->freezeMask = false;
    f.run();
    EXPECT_TRUE(samePixels(f.out(), f.blackOut()));

    // A kept surface missing layers (as from a cache with the mask frozen too)
    // is remade, with a warning only when it is frozen: an unfrozen one is
    // remade anyway.
    auto dropLastWhiteLayer = [&] {
        LayeredImage& kept = *f.context().whiteResult;
        delete kept.layers.back();
        kept.layers.pop_back();
        kept.names.pop_back();
    };
    dropLastWhiteLayer();
    f.run();
    EXPECT_EQ(log.count(Warning, "has 1 of its 2 layers"), 0);
    f.mixed->freezeWhiteSurface = true;
    dropLastWhiteLayer();
    f.run();
    EXPECT_EQ(log.count(Warning, "has 1 of its 2 layers"), 1);
    EXPECT_EQ(f.context().whiteResult->layerCount(), 2u);
}

TEST(MixedSurfaceSynthesis, MaskChannelBeyondTheMaskUsesItsLastChannel)
{
    MixedFixture f;
    // Left half white, right half black, in a one-channel mask.
    for (uint32_t i = 0; i < 256; ++i)
        f.mask().data[i] = i % 16 < 8 ? 1.0f : 0.0f;
    f.mixed->maskChannel = 3;
    f.run();
    for (int32_t y = 0; y < 20; ++y)
        for (int32_t x = 0; x < 24; ++x)
            ASSERT_EQ(f.out().pixelAt(x, y)[0], (x < 12 ? f.whiteOut() : f.blackOut()).pixelAt(x, y)[0]) << x << y;

    // In an RGB mask, channel 5 means the blue channel.
    f.mask() = constantImage(16, 16, RGB, 0.0f);
    for (uint64_t i = 0; i < 256; ++i)
        f.mask().data[3 * i + 2] = 1.0f;
    f.mixed->maskChannel = 5;
    f.run();
    EXPECT_TRUE(samePixels(f.out(), f.whiteOut()));
}

TEST(MixedSurfaceSynthesis, LayerCountsAndLayoutsOfTheTwoSurfacesMayDiffer)
{
    MixedFixture f;
    f.addLayer(*f.white, "Extra", patternImage(12, 10, Gray));
    f.run();
    EXPECT_EQ(f.mixed->synthesizer()->target->layerCount(), 2u);

    // Colour (8-bit PNG) and grey (16-bit TIFF) give RGBA saved like the deeper layer.
    Image& grey = f.black->layers[0].texture->image;
    grey = patternImage(8, 8, Gray, 4.0f);
    grey.fileType = FileTIFF;
    grey.sampleType = UInt16;
    f.black->layers[1].texture->image.fileType = FileEXR;
    f.black->layers[1].texture->image.sampleType = Float32;
    LogCapture log;
    f.run();
    EXPECT_EQ(log.count(Warning, "The two input surface of the mixed surface have different channel layout!"), 1);
    const Image& rgba = f.out();
    EXPECT_EQ(rgba.format, RGBA);
    EXPECT_EQ(rgba.fileType, uint32_t(FileTIFF));
    EXPECT_EQ(rgba.sampleType, uint32_t(UInt16));
    for (uint32_t k = 0; k < 4; ++k)
        EXPECT_EQ(rgba.pixelAt(3, 4)[k], k < 3 ? f.whiteOut().pixelAt(3, 4)[k] : 1.0f);
    EXPECT_EQ(f.out(1).format, Normal);
    EXPECT_EQ(f.out(1).fileType, uint32_t(FileTIFF));
    EXPECT_EQ(f.out(1).sampleType, uint32_t(Float32));

    // Grey against colour under a black mask: the grey value in R, G and B.
    f.mask() = constantImage(16, 16, Gray, 0.0f);
    f.run();
    for (uint32_t k = 0; k < 3; ++k)
        EXPECT_EQ(f.out().pixelAt(6, 2)[k], f.blackOut().pixelAt(6, 2)[0]);
}

TEST(MixedSurfaceSynthesis, SynthesizedPhasesAndCancel)
{
    MixedFixture f;
    f.mixed->synthesizeMask = f.mixed->synthesizeWhiteSurface = true;
    f.mask() = patternImage(16, 16, Gray);
    LogCapture full;
    std::vector<int> progress;
    f.run([&](int value) { progress.push_back(value); });
    // One bar over the phases: the mask takes 1 of 6 units, the white surface 2.
    EXPECT_TRUE(strictlyRising(progress));
    EXPECT_LE(progress.front(), 16);
    EXPECT_EQ(progress.back(), 100);
    EXPECT_EQ(full.count(Info, "MixedSurface Phase 1/4: mask synthesis."), 1);
    EXPECT_EQ(full.count(Info, "Synthesizer started"), 2);
    const LayeredImage* mask = f.context().maskResult.get();
    EXPECT_EQ(std::make_pair(mask->layers[0]->width, mask->layers[0]->height), std::make_pair(24u, 20u));
    // Cancelled in the white phase: the frozen mask stays, white is dropped, black never runs.
    f.mixed->freezeMask = true;
    LogCapture log;
    EXPECT_FALSE(f.run([&](int) { requestCancel(f.context()); }));
    EXPECT_EQ(log.count(Info, "Phase 1/4") + log.count(Info, "Phase 3/4") + log.count(Success, "Mixed"), 0);
    EXPECT_EQ(f.context().maskResult.get(), mask);
    EXPECT_EQ(f.context().whiteResult, nullptr);
    EXPECT_EQ(f.context().currentSynthesizer.load(), nullptr);
}

TEST(MixedSurfaceSynthesis, MissingPartsEndTheRunWithAMessage)
{
    MixedFixture f;
    ProjectData::TextureData* mask = f.mixed->maskTexture;
    for (const char* missing : {"no mask image", "black surface"}) {
        f.mixed->maskTexture = missing[0] == 'n' ? nullptr : mask;
        f.mixed->blackSurface = missing[0] == 'n' ? f.black : nullptr;
        LogCapture log;
        EXPECT_FALSE(f.run()) << missing;
        EXPECT_EQ(log.count(Error, missing), 1);
        EXPECT_EQ(f.mixed->synthesizer()->target, nullptr);
    }
}
