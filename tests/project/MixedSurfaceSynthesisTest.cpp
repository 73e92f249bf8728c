#include "MixedSurfaceSynthesis.h"
#include "ProjectTestSupport.h"
#include "SurfaceSynthesis.h"
#include "SynthesisTestSupport.h"

#include <gtest/gtest.h>

using namespace Velmor;

namespace {

// A white and a black surface with a colour and a normal layer each, mixed
// at 24 x 20 through a 16 x 16 grey mask. Everything is filled, not
// synthesized, unless a test says otherwise.
struct MixedFixture
{
    MixedFixture()
    {
        white = store.addSurface("White");
        black = store.addSurface("Black");
        addLayer(*white, "Color", patternImage(12, 10, RGB, 0.0f));
        addLayer(*white, "Normal", patternImage(12, 10, Normal, 0.5f));
        addLayer(*black, "Color", patternImage(8, 8, RGB, 2.0f));
        addLayer(*black, "Normal", patternImage(8, 8, Normal, 3.0f));
        mixed = store.addMixedSurface("Mix");
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
    LayeredImage* output() { return mixed->synthesizer()->target; }
    Image& mask() { return mixed->maskTexture->image; }

    ProjectData store;
    ProjectData::SurfaceData* white = nullptr;
    ProjectData::SurfaceData* black = nullptr;
    ProjectData::MixedSurfaceData* mixed = nullptr;
};

float at(const Image& image, uint32_t x, uint32_t y, uint32_t channel = 0)
{
    return image.data[image.channels() * (x + uint64_t(image.width) * y) + channel];
}

} // namespace

TEST(MixedSurfaceSynthesis, FillsTileAtPixelSizeOrStretch)
{
    Image source(3, 2, Gray);
    for (int i = 0; i < 6; ++i)
        source.data[i] = float(i + 1);

    Image tiled(7, 5, Gray);
    fillFromSource(source, tiled, true, Linear);
    for (uint32_t y = 0; y < 5; ++y)
        for (uint32_t x = 0; x < 7; ++x)
            ASSERT_EQ(at(tiled, x, y), at(source, x % 3, y % 2)) << x << "," << y;

    Image stretched(6, 4, Gray);
    fillFromSource(source, stretched, false, Nearest);
    for (uint32_t y = 0; y < 4; ++y)
        for (uint32_t x = 0; x < 6; ++x)
            ASSERT_EQ(at(stretched, x, y), at(source, x / 2, y / 2)) << x << "," << y;

    // Linear filtering interpolates between source pixels.
    Image smooth(6, 4, Gray);
    fillFromSource(source, smooth, false, Linear);
    EXPECT_FLOAT_EQ(at(smooth, 1, 0), 1.5f);
}

TEST(MixedSurfaceSynthesis, PureMasksReproduceOneSurfaceExactly)
{
    MixedFixture f;
    f.mixed->tileWhiteSurface = true;
    std::vector<int> progress;
    LogCapture log;
    EXPECT_TRUE(f.run([&](int value) { progress.push_back(value); }));

    const std::vector<std::pair<QString, int>> phases = {
        {"\nSynthesizing surface Mix", Info},
        {"MixedSurface Phase 1/4: filling mask.", Info},
        {"MixedSurface Phase 2/4: filling white surface.", Info},
        {"MixedSurface Phase 3/4: filling black surface.", Info},
        {"MixedSurface Phase 4/4: merging surfaces.", Info},
        {"MixedSurface synthetize finished.", Success}};
    EXPECT_EQ(log.messages, phases);

    SurfaceSynthesisContext& c = f.context();
    ASSERT_TRUE(c.maskResult && c.whiteResult && c.blackResult);
    EXPECT_EQ(c.maskResult->names, std::vector<std::string>{"Mask"});
    LayeredImage* out = f.output();
    ASSERT_NE(out, nullptr);
    ASSERT_EQ(out->layerCount(), 2u);
    EXPECT_EQ(out->names, (std::vector<std::string>{"Color", "Normal"}));
    // All-white mask: the output is the (tiled) white surface, bit for bit.
    for (size_t i = 0; i < 2; ++i)
        EXPECT_TRUE(samePixels(*out->layers[i], *c.whiteResult->layers[i])) << i;
    const Image& whiteColor = f.white->layers[0].texture->image;
    EXPECT_EQ(at(*out->layers[0], 13, 11, 2), at(whiteColor, 1, 1, 2));
    EXPECT_EQ(out->layers[1]->format, Normal);
    EXPECT_EQ(out->layers[0]->width, 24u);
    EXPECT_EQ(out->layers[0]->height, 20u);

    // Merge progress rises with the rows and ends at 100.
    ASSERT_FALSE(progress.empty());
    for (size_t i = 1; i < progress.size(); ++i)
        EXPECT_GT(progress[i], progress[i - 1]);
    EXPECT_EQ(progress.back(), 100);

    // All-black mask: the black surface exactly; half: the average, with
    // normals of unit length.
    f.mask() = constantImage(16, 16, Gray, 0.0f);
    f.run();
    for (size_t i = 0; i < 2; ++i)
        EXPECT_TRUE(samePixels(*f.output()->layers[i], *c.blackResult->layers[i])) << i;
    f.mask() = constantImage(16, 16, Gray, 0.5f);
    f.run();
    const Image& w = *c.whiteResult->layers[0];
    const Image& b = *c.blackResult->layers[0];
    EXPECT_FLOAT_EQ(at(*f.output()->layers[0], 5, 7, 1), 0.5f * (at(w, 5, 7, 1) + at(b, 5, 7, 1)));
    const Image& n = *f.output()->layers[1];
    for (uint64_t i = 0; i < n.pixelCount(); ++i) {
        const float* p = n.data + 3 * i;
        ASSERT_NEAR(p[0] * p[0] + p[1] * p[1] + p[2] * p[2], 1.0f, 1e-5f) << i;
    }
}

TEST(MixedSurfaceSynthesis, FrozenResultsAreKeptAndOthersRemade)
{
    MixedFixture f;
    f.mixed->freezeMask = true;
    f.run();
    const LayeredImage* keptMask = f.context().maskResult.get();
    ASSERT_NE(keptMask, nullptr);

    // The mask texture turns black, but the frozen mask (white) is reused
    // without a phase 1 message; the unfrozen white surface is made again
    // from its changed texture.
    f.mask() = constantImage(16, 16, Gray, 0.0f);
    f.white->layers[0].texture->image = constantImage(12, 10, RGB, 0.25f);
    LogCapture log;
    f.run();
    EXPECT_EQ(log.count(Info, "Phase 1/4"), 0);
    EXPECT_EQ(log.count(Info, "MixedSurface Phase 2/4: filling white surface."), 1);
    EXPECT_EQ(f.context().maskResult.get(), keptMask);
    EXPECT_TRUE(samePixels(*f.context().whiteResult->layers[0], constantImage(24, 20, RGB, 0.25f)));
    EXPECT_TRUE(samePixels(*f.output()->layers[0], *f.context().whiteResult->layers[0]));

    // Unfrozen, the mask is made again from the (now black) texture.
    f.mixed->freezeMask = false;
    f.run();
    EXPECT_TRUE(samePixels(*f.output()->layers[0], *f.context().blackResult->layers[0]));
}

TEST(MixedSurfaceSynthesis, KeptSurfaceMissingLayersIsMadeAgain)
{
    // A cache written with the mask frozen too brings back only the first
    // layer of a frozen surface.
    MixedFixture f;
    f.mixed->freezeWhiteSurface = true;
    f.run();
    LayeredImage& kept = *f.context().whiteResult;
    delete kept.layers.back();
    kept.layers.pop_back();
    kept.names.pop_back();
    LogCapture log;
    f.run();
    EXPECT_EQ(log.count(Warning, "has 1 of its 2 layers"), 1);
    EXPECT_EQ(log.count(Info, "MixedSurface Phase 2/4: filling white surface."), 1);
    ASSERT_EQ(f.output()->layerCount(), 2u);
    EXPECT_EQ(f.context().whiteResult->layerCount(), 2u);
}

TEST(MixedSurfaceSynthesis, MaskChannelBeyondTheMaskUsesItsLastChannel)
{
    MixedFixture f;
    // Left half white, right half black, in a one-channel mask.
    Image mask(16, 16, Gray);
    for (uint32_t y = 0; y < 16; ++y)
        for (uint32_t x = 0; x < 8; ++x)
            mask.data[x + 16 * y] = 1.0f;
    f.mask() = std::move(mask);
    f.mixed->maskChannel = 3;
    f.run();
    const Image& out = *f.output()->layers[0];
    const Image& w = *f.context().whiteResult->layers[0];
    const Image& b = *f.context().blackResult->layers[0];
    for (uint32_t y = 0; y < 20; ++y)
        for (uint32_t x = 0; x < 24; ++x)
            ASSERT_EQ(at(out, x, y), x < 12 ? at(w, x, y) : at(b, x, y)) << x << "," << y;

    // In an RGB mask, channel 5 means the blue channel.
    Image rgbMask = constantImage(16, 16, RGB, 0.0f);
    for (uint64_t i = 0; i < rgbMask.pixelCount(); ++i)
        rgbMask.data[3 * i + 2] = 1.0f;
    f.mask() = std::move(rgbMask);
    f.mixed->maskChannel = 5;
    f.run();
    EXPECT_TRUE(samePixels(*f.output()->layers[0], *f.context().whiteResult->layers[0]));
}

TEST(MixedSurfaceSynthesis, LayerCountsAndLayoutsOfTheTwoSurfacesMayDiffer)
{
    MixedFixture f;
    f.addLayer(*f.white, "Extra", patternImage(12, 10, Gray));
    f.run();
    ASSERT_EQ(f.context().whiteResult->layerCount(), 3u);
    EXPECT_EQ(f.output()->layerCount(), 2u);

    // Colour (8-bit PNG) against grey (16-bit TIFF) becomes RGBA, saved
    // like the deeper layer.
    f.black->layers[0].texture->image = patternImage(8, 8, Gray, 4.0f);
    f.black->layers[0].texture->image.fileType = FileTIFF;
    f.black->layers[0].texture->image.sampleType = UInt16;
    // Normal against normal of another file type keeps its format.
    f.black->layers[1].texture->image.fileType = FileEXR;
    f.black->layers[1].texture->image.sampleType = Float32;
    LogCapture log;
    f.run();
    EXPECT_EQ(log.count(Warning, "The two input surface of the mixed surface have different channel layout!"), 1);
    const Image& rgba = *f.output()->layers[0];
    EXPECT_EQ(rgba.format, RGBA);
    EXPECT_EQ(rgba.fileType, uint32_t(FileTIFF));
    EXPECT_EQ(rgba.sampleType, uint32_t(UInt16));
    const Image& w = *f.context().whiteResult->layers[0];
    for (uint32_t k = 0; k < 3; ++k)
        EXPECT_EQ(at(rgba, 3, 4, k), at(w, 3, 4, k));
    EXPECT_EQ(at(rgba, 3, 4, 3), 1.0f);
    const Image& normal = *f.output()->layers[1];
    EXPECT_EQ(normal.format, Normal);
    EXPECT_EQ(normal.fileType, uint32_t(FileTIFF));
    EXPECT_EQ(normal.sampleType, uint32_t(Float32));

    // Grey against colour under a black mask: the grey value in R, G and B.
    f.mask() = constantImage(16, 16, Gray, 0.0f);
    f.run();
    const Image& grey = *f.context().blackResult->layers[0];
    for (uint32_t k = 0; k < 3; ++k)
        EXPECT_EQ(at(*f.output()->layers[0], 6, 2, k), at(grey, 6, 2));
}

TEST(MixedSurfaceSynthesis, SynthesizedPhasesAndCancel)
{
    MixedFixture f;
    f.mixed->synthesizeMask = true;
    f.mixed->synthesizeWhiteSurface = true;
    f.mask() = patternImage(16, 16, Gray);
    {
        LogCapture log;
        std::vector<int> progress;
        f.run([&](int value) { progress.push_back(value); });
        // One bar over the phases: the synthesized mask and white surface
        // take their shares (1 and 2 of 6 units), the merge ends it at 100.
        for (size_t i = 1; i < progress.size(); ++i)
            EXPECT_GT(progress[i], progress[i - 1]);
        ASSERT_FALSE(progress.empty());
        EXPECT_LE(progress.front(), 16);
        EXPECT_EQ(progress.back(), 100);
        EXPECT_EQ(log.count(Info, "MixedSurface Phase 1/4: mask synthesis."), 1);
        EXPECT_EQ(log.count(Info, "MixedSurface Phase 2/4: white surface synthesis."), 1);
        EXPECT_EQ(log.count(Info, "Synthesizer started"), 2);
        EXPECT_EQ(log.count(Success, "MixedSurface synthetize finished."), 1);
        const LayeredImage& mask = *f.context().maskResult;
        ASSERT_EQ(mask.names, std::vector<std::string>{"Mask"});
        EXPECT_EQ(mask.layers[0]->width, 24u);
        EXPECT_EQ(mask.layers[0]->height, 20u);
        ASSERT_EQ(f.output()->layerCount(), 2u);
        EXPECT_EQ(f.output()->layers[1]->width, 24u);
        EXPECT_EQ(f.mixed->synthesizer()->source, nullptr);
    }
    {
        // Cancelled during the white surface: the mask stays made (it is
        // frozen), the white part is dropped and the black phase never runs.
        f.mixed->freezeMask = true;
        const LayeredImage* mask = f.context().maskResult.get();
        LogCapture log;
        EXPECT_FALSE(f.run([&](int) { requestCancel(f.context()); }));
        EXPECT_EQ(log.count(Info, "Phase 1/4"), 0);
        EXPECT_EQ(log.count(Info, "Phase 3/4"), 0);
        EXPECT_EQ(log.count(Success, "MixedSurface synthetize finished."), 0);
        EXPECT_EQ(f.context().maskResult.get(), mask);
        EXPECT_EQ(f.context().whiteResult, nullptr);
        EXPECT_EQ(f.context().currentSynthesizer.load(), nullptr);
    }
}

TEST(MixedSurfaceSynthesis, MissingPartsEndTheRunWithAMessage)
{
    MixedFixture f;
    f.mixed->maskTexture = nullptr;
    {
        LogCapture log;
        EXPECT_FALSE(f.run());
        EXPECT_EQ(log.count(Error, "no mask image"), 1);
        EXPECT_EQ(f.output(), nullptr);
    }
    f.mixed->maskTexture = f.store.textures.front().get();
    f.mixed->blackSurface = nullptr;
    {
        LogCapture log;
        f.run();
        EXPECT_EQ(log.count(Error, "black surface"), 1);
        EXPECT_EQ(f.output(), nullptr);
    }
}
