#include "ImageSynthesizer.h"
#include "ProjectData.h"
#include "ProjectTestSupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using Velmor::ProjectData;

TEST(ProjectData, NewRecordsGetUniqueNames)
{
    QTemporaryDir dir;
    const QString path = writeTestImage(dir.path() + "/x.png", 6, 4, RGB);
    ProjectData store;

    ProjectData::TextureData* a = store.addTexture(path);
    ProjectData::TextureData* b = store.addTexture(dir.path() + "/other/x.png"); // cannot load: placeholder
    ProjectData::TextureData* c = store.addTexture(path);
    EXPECT_EQ(a->name, "x");
    EXPECT_EQ(b->name, "x_1");
    EXPECT_EQ(c->name, "x_2");
    EXPECT_EQ(a->image.width, 6u);
    EXPECT_EQ(b->image.width, 512u);
    store.removeTexture(b);
    EXPECT_EQ(store.addTexture(path)->name, "x_1");
    EXPECT_EQ(ProjectData::nameFromPath("C:\\dir.v2\\stone.tiff"), "stone");

    EXPECT_EQ(store.addDirectionMap("anything")->name, "DirMap");
    EXPECT_EQ(store.addDirectionMap("Brush")->name, "DirMap_1");

    // Surfaces and mixed surfaces share one name space.
    ProjectData::SurfaceData* surface = store.addSurface("Surface");
    ProjectData::MixedSurfaceData* mixed = store.addMixedSurface("Surface");
    EXPECT_EQ(mixed->name, "Surface_1");
    ASSERT_EQ(surface->synthesizers.size(), 2u);
    EXPECT_EQ(surface->synthesizerMode(), "Patch Based Blended");
    EXPECT_FALSE(surface->selectSynthesizer("No Such Method"));
    EXPECT_EQ(surface->synthesizerMode(), "Patch Based Blended");
    EXPECT_TRUE(surface->selectSynthesizer("Patch Based Cutout"));
}

TEST(ProjectData, SizesLookupsAndRemovalClearReferences)
{
    QTemporaryDir dir;
    ProjectData store;
    ProjectData::TextureData* wide = store.addTexture(writeTestImage(dir.path() + "/wide.png", 40, 10, RGB));
    ProjectData::TextureData* tall = store.addTexture(writeTestImage(dir.path() + "/tall.png", 20, 30, RGB));
    ProjectData::SurfaceData* surface = store.addSurface("S");
    int32_t w = 0, h = 0;
    surface->surfaceSize(w, h);
    EXPECT_EQ(w, INT32_MAX);
    EXPECT_EQ(h, INT32_MAX);
    surface->addLayer().texture = wide;
    surface->addLayer().texture = tall;
    surface->surfaceSize(w, h);
    EXPECT_EQ(w, 20);
    EXPECT_EQ(h, 10);

    wide->id = 5;
    tall->id = 5;
    EXPECT_EQ(store.textureById(5), wide); // the first match wins
    EXPECT_EQ(store.textureById(6), nullptr);

    ProjectData::MixedSurfaceData* mixed = store.addMixedSurface("M");
    mixed->whiteSurface = surface;
    mixed->maskTexture = tall;
    surface->maskTexture = tall;
    surface->directionMap = store.addDirectionMap();
    store.removeTexture(tall);
    store.removeDirectionMap(surface->directionMap);
    EXPECT_EQ(surface->layers[1].texture, nullptr);
    EXPECT_EQ(surface->maskTexture, nullptr);
    EXPECT_EQ(mixed->maskTexture, nullptr);
    EXPECT_EQ(surface->directionMap, nullptr);
    store.removeSurface(surface);
    EXPECT_EQ(mixed->whiteSurface, nullptr);
    EXPECT_EQ(store.surfaces.size(), 1u);
    store.removeSurface(surface); // no longer there: ignored
    EXPECT_EQ(store.surfaces.size(), 1u);
}

TEST(ProjectData, UpdateMixedLayersChecksAndMixes)
{
    ProjectData store;
    auto makeTexture = [&](float value, PixelFormat format) {
        store.textures.push_back(std::make_unique<ProjectData::TextureData>());
        Image& image = store.textures.back()->image;
        image.allocate(8, 8, format);
        for (uint64_t i = 0; i < image.floatCount(); ++i)
            image.data[i] = value;
        return store.textures.back().get();
    };
    ProjectData::SurfaceData* white = store.addSurface("W");
    ProjectData::SurfaceData* black = store.addSurface("B");
    ProjectData::MixedSurfaceData* mixed = store.addMixedSurface("M");
    for (int i = 0; i < 3; ++i)
        white->addLayer().texture = makeTexture(1.0f, RGB);
    for (int i = 0; i < 2; ++i)
        black->addLayer().texture = makeTexture(0.0f, RGB);

    LogCapture log;
    mixed->updateMixedLayers(); // no surfaces: silent
    mixed->whiteSurface = white;
    mixed->blackSurface = black;
    mixed->updateMixedLayers();
    EXPECT_EQ(log.count(Warning, "MixedSurface: Mask image is invalid!"), 1);
    mixed->maskTexture = makeTexture(0.25f, Gray);
    mixed->updateMixedLayers();
    EXPECT_EQ(log.count(Warning, "MixedSurface: Number of layers of two surfaces does not match!"), 1);
    EXPECT_TRUE(mixed->layers.empty());
    EXPECT_EQ(log.count(Warning), 2);

    black->addLayer().texture = makeTexture(0.0f, RGB);
    white->layers[0].name = "Color";
    white->layers[1].mode = ProjectData::LayerMode::Normal;
    mixed->updateMixedLayers();
    ASSERT_EQ(mixed->layers.size(), 3u);
    EXPECT_EQ(mixed->layers[0].name, "Color");
    EXPECT_EQ(mixed->layers[1].mode, ProjectData::LayerMode::Normal);
    EXPECT_NEAR(mixed->layers[0].texture->image.pixelAt(4, 4)[0], 0.25f, 1e-6f);
    int32_t w = 0, h = 0;
    mixed->surfaceSize(w, h);
    EXPECT_EQ(w, 8);
    EXPECT_EQ(store.textures.size(), 7u); // generated textures stay out of the list
}
