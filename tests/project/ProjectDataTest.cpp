#include "ProjectTestSupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using Velmor::ProjectData;

TEST(ProjectData, NewRecordsGetUniqueNames)
{
    QTemporaryDir dir;
    const QString path = writeTestImage(dir.path() + "/x.png", 6, 4, RGB);
    ProjectData store;
    EXPECT_EQ(store.addTexture(path)->name, "x");
    ProjectData::TextureData* missing = store.addTexture(dir.path() + "/other/x.png"); // cannot load: placeholder
    EXPECT_EQ(missing->name, "x_1");
    EXPECT_EQ(missing->image.width, 512u);
    EXPECT_EQ(store.addTexture(path)->name, "x_2");
    store.removeTexture(missing);
    EXPECT_EQ(store.addTexture(path)->name, "x_1");
    EXPECT_EQ(ProjectData::nameFromPath("C:\\dir.v2\\stone.tiff"), "stone");
    store.addDirectionMap();
    EXPECT_EQ(store.addDirectionMap("Brush")->name, "DirMap_1"); // the name argument is not used

    // Surfaces and mixed surfaces share one name space.
    ProjectData::SurfaceData* surface = store.addSurface("Surface");
    EXPECT_EQ(store.addMixedSurface("Surface")->name, "Surface_1");
    EXPECT_FALSE(surface->selectSynthesizer("No Such Method"));
    EXPECT_EQ(surface->synthesizerMode(), "Patch Based Blended");
}

TEST(ProjectData, SizesLookupsAndRemovalClearReferences)
{
    QTemporaryDir dir;
    ProjectData store;
    ProjectData::TextureData* wide = store.addTexture(writeTestImage(dir.path() + "/wide.png", 40, 10, RGB));
    ProjectData::TextureData* tall = store.addTexture(writeTestImage(dir.path() + "/tall.png", 20, 30, RGB));
    ProjectData::SurfaceData* surface = store.addSurface("S");
    surface->addLayer().texture = wide;
    surface->addLayer().texture = tall;
    int32_t w = 0, h = 0;
    surface->surfaceSize(w, h);
    EXPECT_EQ(std::make_pair(w, h), std::make_pair(20, 10)); // the smallest of each

    ProjectData::MixedSurfaceData* mixed = store.addMixedSurface("M");
    mixed->whiteSurface = surface;
    mixed->maskTexture = surface->maskTexture = tall;
    surface->directionMap = store.addDirectionMap();
    store.removeTexture(tall);
    store.removeDirectionMap(surface->directionMap);
    EXPECT_TRUE(!surface->layers[1].texture && !surface->maskTexture && !surface->directionMap);
    EXPECT_EQ(mixed->maskTexture, nullptr);
    store.removeSurface(surface);
    EXPECT_EQ(mixed->whiteSurface, nullptr);
    store.removeSurface(surface); // no longer there: ignored
    EXPECT_EQ(store.surfaces.size(), 1u);
}

TEST(ProjectData, UpdateMixedLayersChecksAndMixes)
{
    ProjectData store;
    auto texture = [&](float value, PixelFormat format) {
        return addImageTexture(store, "", constantImage(8, 8, format, value));
    };
    ProjectData::SurfaceData* white = store.addSurface("W");
    ProjectData::SurfaceData* black = store.addSurface("B");
    ProjectData::MixedSurfaceData* mixed = store.addMixedSurface("M");
    for (int i = 0; i < 3; ++i)
        white->addLayer().texture = texture(1.0f, RGB);
    for (int i = 0; i < 2; ++i)
        black->addLayer().texture = texture(0.0f, RGB);

    LogCapture log;
    mixed->updateMixedLayers(); // no surfaces: silent
    mixed->whiteSurface = white;
    mixed->blackSurface = black;
    mixed->updateMixedLayers();
    EXPECT_EQ(log.count(Warning, "MixedSurface: Mask image is invalid!"), 1);
    mixed->maskTexture = texture(0.25f, Gray);
    mixed->updateMixedLayers();
    EXPECT_EQ(log.count(Warning, "MixedSurface: Number of layers of two surfaces does not match!"), 1);
    EXPECT_TRUE(mixed->layers.empty());

    black->addLayer().texture = texture(0.0f, RGB);
    white->layers[0].name = "Color";
    white->layers[1].mode = ProjectData::LayerMode::Normal;
    mixed->updateMixedLayers();
    ASSERT_EQ(mixed->layers.size(), 3u);
    EXPECT_TRUE(mixed->layers[0].name == "Color" && mixed->layers[1].mode == ProjectData::LayerMode::Normal);
    EXPECT_NEAR(mixed->layers[0].texture->image.pixelAt(4, 4)[0], 0.25f, 1e-6f);
    EXPECT_EQ(store.textures.size(), 7u); // generated textures stay out of the list

    // The rules of the merge: a channel the mask lacks reads its last one;
    // layers of different formats mix as RGBA, with a warning.
    Image twoChannels = constantImage(8, 8, RGB, 0.25f);
    for (uint64_t i = 0; i < twoChannels.pixelCount(); ++i)
        twoChannels.data[3 * i + 2] = 0.75f;
    mixed->maskTexture = addImageTexture(store, "", twoChannels);
    mixed->maskChannel = 7;
    black->layers[2].texture = texture(0.0f, Gray);
    LogCapture merged;
    mixed->updateMixedLayers();
    ASSERT_EQ(mixed->layers.size(), 3u);
    EXPECT_NEAR(mixed->layers[0].texture->image.pixelAt(4, 4)[1], 0.75f, 1e-6f);
    const Image& rgba = mixed->layers[2].texture->image;
    ASSERT_EQ(rgba.format, RGBA);
    EXPECT_NEAR(rgba.pixelAt(4, 4)[0], 0.75f, 1e-6f);
    EXPECT_NEAR(rgba.pixelAt(4, 4)[3], 1.0f, 1e-6f);
    EXPECT_EQ(merged.count(Warning, "The two input surface of the mixed surface have different channel layout!"), 1);
}
