#include "CacheFiles.h"
#include "ProjectTestSupport.h"
#include "SurfaceSynthesisContext.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Velmor;

namespace {

void fillRamp(Image& image)
{
    for (uint64_t i = 0; i < image.floatCount(); ++i)
        image.data[i] = float(i % 1000) * 0.001f - 0.3f;
}

std::unique_ptr<LayeredImage> result(std::initializer_list<const char*> names, uint32_t size)
{
    auto layered = std::make_unique<LayeredImage>();
    for (const char* name : names) {
        Image* image = new Image(size, size, RGB);
        fillRamp(*image);
        image->sampleType = 2;
        layered->setLayer(name, image);
    }
    return layered;
}

} // namespace

TEST(CacheFiles, MapFilesRoundTripAndStoreTheWidthTwice)
{
    QTemporaryDir dir;
    ProjectData store;
    ProjectData::DirectionMapData* map = store.addDirectionMap();
    fillRamp(map->image);
    map->id = 3;
    const QString path = dir.path() + "/DirMap.vdm";
    ASSERT_TRUE(writeMapFile(path, *map));
    const QByteArray bytes = readFile(path);
    EXPECT_TRUE(bytes.startsWith("3 DirMap 512 512 "));
    const int lengthEnd = bytes.indexOf(' ', 17);
    EXPECT_EQ(bytes.mid(17, lengthEnd - 17).toInt(), bytes.size() - lengthEnd - 1);

    ProjectData loaded;
    loaded.addDirectionMap(); // takes "DirMap"; the file's name still wins
    ProjectData::DirectionMapData* back = readDirectionMapFile(path, loaded);
    EXPECT_EQ(back->name, "DirMap");
    EXPECT_EQ(back->id, 3);
    EXPECT_EQ(0, memcmp(back->image.data, map->image.data, map->image.floatCount() * 4));

    // A non-square map comes back square and still covers the whole surface.
    ProjectData::ScaleMapData* scale = store.addScaleMap();
    scale->image.allocate(8, 4, Gray);
    for (uint32_t y = 0; y < 4; ++y)
        for (uint32_t x = 0; x < 8; ++x)
            scale->image.data[x + 8 * y] = float(y);
    ASSERT_TRUE(writeMapFile(dir.path() + "/s.vsm", *scale));
    ProjectData::ScaleMapData* square = readScaleMapFile(dir.path() + "/s.vsm", loaded);
    EXPECT_EQ(square->image.width, 8u);
    EXPECT_EQ(square->image.height, 8u);
    EXPECT_EQ(square->image.pixelAt(0, 0)[0], 0.0f);
    EXPECT_EQ(square->image.pixelAt(0, 6)[0], 3.0f); // row 6 of 8 samples row 3 of 4

    // The raw form round-trips too.
    cacheCompression = false;
    writeMapFile(dir.path() + "/raw.vsm", *scale);
    ProjectData::ScaleMapData* raw = readScaleMapFile(dir.path() + "/raw.vsm", loaded);
    cacheCompression = true;
    EXPECT_EQ(raw->image.height, 8u);
    EXPECT_EQ(0, memcmp(raw->image.data, square->image.data, 64 * 4));
}

TEST(CacheFiles, DamagedMapAndMaskFilesKeepDefaults)
{
    QTemporaryDir dir;
    ProjectData store;
    ProjectData::DirectionMapData* map = store.addDirectionMap();
    fillRamp(map->image);
    const QString good = dir.path() + "/good.vdm";
    writeMapFile(good, *map);
    const QByteArray bytes = readFile(good);
    const int blockStart = bytes.indexOf(' ', 17) + 1;

    QByteArray corrupt = bytes;
    for (int i = blockStart + 10; i < blockStart + 40; ++i)
        corrupt[i] = char(corrupt[i] ^ 0x5a);
    const std::vector<std::pair<const char*, QByteArray>> cases = {
        {"truncated.vdm", bytes.left(bytes.size() - 100)},
        {"corrupt.vdm", corrupt},
        {"longblock.vdm", "0 DirMap 512 512 999999999 xyz"},
        {"absurd.vdm", "0 DirMap 100000 100000 10 0123456789"},
        {"huge.vdm", "0 DirMap 32768 32768 10 0123456789"},
        {"words.vdm", "0 DirMap wide 512 10 0123456789"},
        {"empty.vdm", ""},
    };
    ProjectData loaded;
    for (const auto& [name, content] : cases) {
        SCOPED_TRACE(name);
        const QString path = dir.path() + "/" + name;
        writeFile(path, content);
        LogCapture log;
        ProjectData::DirectionMapData* back = readDirectionMapFile(path, loaded);
        EXPECT_EQ(log.count(Warning, path), 1);
        EXPECT_EQ(back->image.width, 512u);
        EXPECT_EQ(back->image.pixelAt(7, 9)[1], 1.0f); // still the default (0, 1, 0)
    }
    EXPECT_EQ(loaded.directionMaps.size(), cases.size());

    // The project mask: a missing file warns, a good one resizes the mask.
    LogCapture log;
    EXPECT_FALSE(readMaskCache(dir.path() + "/Mask.cache", loaded));
    EXPECT_EQ(log.count(Warning), 1);
    store.projectMask.allocate(64, 64, Gray);
    fillRamp(store.projectMask);
    writeMaskCache(dir.path() + "/Mask.cache", store);
    EXPECT_TRUE(readMaskCache(dir.path() + "/Mask.cache", loaded));
    EXPECT_EQ(loaded.projectMask.width, 64u);
    EXPECT_EQ(0, memcmp(loaded.projectMask.data, store.projectMask.data, 64 * 64 * 4));
}

TEST(CacheFiles, MixedCacheKeepsTheLayerCountOfTheFirstFrozenPart)
{
    QTemporaryDir dir;
    const QString path = dir.path() + "/Surface2.cache";
    ProjectData store;
    ProjectData::MixedSurfaceData* mixed = store.addMixedSurface("M");
    SurfaceSynthesisContext& context = *mixed->synthesisContext;
    context.maskResult = result({"Mask"}, 16);
    context.maskResult->layers[0]->allocate(16, 16, Gray);
    context.whiteResult = result({"Color", "Normal", "Height"}, 16);
    context.blackResult = result({"Color", "Normal", "Height"}, 16);

    // Nothing frozen: no file, and an old one is removed.
    writeFile(path, "stale");
    ASSERT_TRUE(writeMixedCache(path, *mixed));
    EXPECT_FALSE(QFileInfo::exists(path));

    // Mask and white frozen: the mask and only the first white layer.
    mixed->freezeMask = true;
    mixed->freezeWhiteSurface = true;
    ASSERT_TRUE(writeMixedCache(path, *mixed));
    ProjectData loaded;
    ProjectData::MixedSurfaceData* back = loaded.addMixedSurface("M");
    EXPECT_FALSE(readMixedCache(path, *back)); // nothing frozen in the reader's record
    back->freezeMask = true;
    ASSERT_TRUE(readMixedCache(path, *back));
    SurfaceSynthesisContext& read = *back->synthesisContext;
    ASSERT_TRUE(read.maskResult && read.whiteResult);
    EXPECT_EQ(read.maskResult->names[0], "Mask");
    EXPECT_EQ(read.maskResult->layers[0]->format, Gray);
    ASSERT_EQ(read.whiteResult->layerCount(), 1u);
    EXPECT_EQ(read.whiteResult->names[0], "Color");
    EXPECT_EQ(read.whiteResult->layers[0]->sampleType, 2u);
    EXPECT_EQ(0, memcmp(read.whiteResult->layers[0]->data, context.whiteResult->layers[0]->data, 16 * 16 * 12));
    EXPECT_EQ(read.blackResult, nullptr);

    // Only white frozen: all three white layers.
    mixed->freezeMask = false;
    ASSERT_TRUE(writeMixedCache(path, *mixed));
    ASSERT_TRUE(readMixedCache(path, *back));
    EXPECT_EQ(read.maskResult, nullptr);
    ASSERT_EQ(read.whiteResult->layerCount(), 3u);
    EXPECT_EQ(read.whiteResult->names[2], "Height");

    // A cache cut anywhere replaces nothing and warns once per read.
    const QByteArray whole = readFile(path);
    LogCapture log;
    for (int length = 0; length < whole.size(); length += 7) {
        writeFile(path, whole.left(length));
        EXPECT_FALSE(readMixedCache(path, *back)) << length;
    }
    EXPECT_EQ(log.count(Warning, path), (whole.size() + 6) / 7);
    EXPECT_EQ(read.whiteResult->layerCount(), 3u);
    writeFile(path, "0 1 0 16 16 2000000000 ");
    EXPECT_FALSE(readMixedCache(path, *back));
    EXPECT_EQ(log.count(Warning, path), (whole.size() + 6) / 7 + 1);
}
