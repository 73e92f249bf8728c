#include "CacheFiles.h"
#include "ProjectTestSupport.h"

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

std::unique_ptr<LayeredImage> result(std::initializer_list<const char*> names, PixelFormat format = RGB)
{
    auto layered = std::make_unique<LayeredImage>();
    for (const char* name : names)
        layered->setLayer(name, new Image(patternImage(16, 16, format, float(layered->layerCount()))));
    return layered;
}

} // namespace

TEST(CacheFiles, MapFilesRoundTripAndDamagedOnesKeepDefaults)
{
    QTemporaryDir dir;
    ProjectData store, loaded;
    ProjectData::DirectionMapData* map = store.addDirectionMap();
    fillRamp(map->image);
    map->id = 3;
    const QString path = dir.path() + "/DirMap.vdm";
    ASSERT_TRUE(writeMapFile(path, *map));
    const QByteArray bytes = readFile(path);
    EXPECT_TRUE(bytes.startsWith("3 DirMap 512 512 ")); // the width twice
    loaded.addDirectionMap(); // takes "DirMap"; the file's name still wins
    ProjectData::DirectionMapData* back = readDirectionMapFile(path, loaded);
    EXPECT_TRUE(back->name == "DirMap" && back->id == 3);
    EXPECT_TRUE(samePixels(back->image, map->image));

    // A non-square map, compressed or raw, comes back square over the whole surface.
    ProjectData::ScaleMapData* scale = store.addScaleMap();
    scale->image.allocate(8, 4, Gray);
    for (uint32_t i = 0; i < 32; ++i)
        scale->image.data[i] = float(i / 8);
    for (bool compress : {true, false}) {
        cacheCompression = compress;
        ASSERT_TRUE(writeMapFile(dir.path() + "/s.vsm", *scale));
        const Image& square = readScaleMapFile(dir.path() + "/s.vsm", loaded)->image;
        cacheCompression = true;
        EXPECT_EQ(square.height, 8u);
        EXPECT_EQ(square.pixelAt(0, 6)[0], 3.0f); // row 6 of 8 samples row 3 of 4
    }

    // Damaged files warn and leave the new map at its default.
    QByteArray corrupt = bytes;
    for (int i = bytes.indexOf(' ', 17) + 11; i < bytes.indexOf(' ', 17) + 41; ++i)
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
    for (const auto& [name, content] : cases) {
        SCOPED_TRACE(name);
        writeFile(dir.path() + "/" + name, content);
        LogCapture log;
        const Image& image = readDirectionMapFile(dir.path() + "/" + name, loaded)->image;
        EXPECT_EQ(log.count(Warning, dir.path() + "/" + name), 1);
        EXPECT_TRUE(image.width == 512 && image.pixelAt(7, 9)[1] == 1.0f); // still the default (0, 1, 0)
    }

    // A missing project mask warns.
    LogCapture log;
    EXPECT_FALSE(readMaskCache(dir.path() + "/Mask.cache", loaded));
    EXPECT_EQ(log.count(Warning), 1);
}

TEST(CacheFiles, MixedCacheKeepsTheLayerCountOfTheFirstFrozenPart)
{
    QTemporaryDir dir;
    const QString path = dir.path() + "/Surface2.cache";
    ProjectData store;
    ProjectData::MixedSurfaceData* mixed = store.addMixedSurface("M");
    SurfaceSynthesisContext& context = *mixed->synthesisContext;
    context.maskResult = result({"Mask"}, Gray);
    context.whiteResult = result({"Color", "Normal", "Height"});
    context.blackResult = result({"Color", "Normal", "Height"});

    // Nothing frozen: no file, and an old one is removed.
    writeFile(path, "stale");
    ASSERT_TRUE(writeMixedCache(path, *mixed));
    EXPECT_FALSE(QFileInfo::exists(path));

    // Mask and white frozen: the mask and only the first white layer.
    mixed->freezeMask = mixed->freezeWhiteSurface = true;
    ASSERT_TRUE(writeMixedCache(path, *mixed));
    ProjectData loaded;
    ProjectData::MixedSurfaceData* back = loaded.addMixedSurface("M");
    EXPECT_FALSE(readMixedCache(path, *back)); // nothing frozen in the reader's record
    back->freezeMask = true;
    ASSERT_TRUE(readMixedCache(path, *back));
    SurfaceSynthesisContext& read = *back->synthesisContext;
    ASSERT_TRUE(read.maskResult && read.whiteResult);
    EXPECT_EQ(read.whiteResult->names, std::vector<std::string>{"Color"});
    EXPECT_EQ(read.blackResult, nullptr);

    // Only white frozen: all three white layers.
    mixed->freezeMask = false;
    ASSERT_TRUE(writeMixedCache(path, *mixed));
    ASSERT_TRUE(readMixedCache(path, *back));
    EXPECT_EQ(read.maskResult, nullptr);
    EXPECT_EQ(read.whiteResult->names, (std::vector<std::string>{"Color", "Normal", "Height"}));

    // A cut cache or an absurd block replaces nothing and warns once per read.
    const QByteArray whole = readFile(path);
    LogCapture log;
    int reads = 0;
    for (int length = 0; length < whole.size() + 7; length += 7, ++reads) {
        writeFile(path, length < whole.size() ? whole.left(length) : QByteArray("0 1 0 16 16 2000000000 "));
        EXPECT_FALSE(readMixedCache(path, *back)) << length;
    }
    EXPECT_EQ(log.count(Warning, path), reads);
    EXPECT_EQ(read.whiteResult->layerCount(), 3u);
}
