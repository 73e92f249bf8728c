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

TEST(CacheFiles, MapFilesRoundTripAndDamagedOnesKeepTheirHeaderAndWhatTheyHold)
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

    // A non-square map is stored with its width twice and its own data: it
    // comes back width x width, filled as far as the data goes, with a warning.
    ProjectData::ScaleMapData* scale = store.addScaleMap();
    scale->image.allocate(8, 4, Gray);
    for (uint32_t i = 0; i < 32; ++i)
        scale->image.data[i] = float(i / 8 + 1);
    for (bool compress : {true, false}) {
        cacheCompression = compress;
        ASSERT_TRUE(writeMapFile(dir.path() + "/s.vsm", *scale));
        EXPECT_TRUE(readFile(dir.path() + "/s.vsm").startsWith(compress ? "0 ScaleMap 8 8 " : "0 ScaleMap 8 8 128 "));
        LogCapture log;
        const Image& square = readScaleMapFile(dir.path() + "/s.vsm", loaded)->image;
        cacheCompression = true;
        EXPECT_EQ(log.count(Warning, dir.path() + "/s.vsm"), 1);
        ASSERT_TRUE(square.width == 8 && square.height == 8);
        EXPECT_EQ(std::vector<float>(square.data, square.data + 32), std::vector<float>(scale->image.data, scale->image.data + 32));
        EXPECT_EQ(square.pixelAt(0, 5)[0], 0.0f);
    }

    // Damaged pixels keep the header's ID and name (surfaces find the map by
    // them) and fill what they hold; a damaged header keeps the defaults.
    QByteArray corrupt = bytes;
    const int blockStart = bytes.indexOf(' ', 17) + 1;
    for (int i = (blockStart + bytes.size()) / 2; i < (blockStart + bytes.size()) / 2 + 30; ++i)
        corrupt[i] = char(corrupt[i] ^ 0x5a);
    const uint32_t firstRow = 512 * 3;
    const struct { const char* name; QByteArray content; int id; bool firstRowRead; } cases[] = {
        {"truncated.vdm", "5 Kept " + bytes.mid(9, bytes.size() - 9 - 2000), 5, true},
        {"corrupt.vdm", "6 Kept " + corrupt.mid(9), 6, true},
        {"longblock.vdm", "7 Kept 512 512 999999999 xyz", 7, false},
        {"negative.vdm", "8 Kept 512 512 -1 xyz", 8, false},
        {"absurd.vdm", "0 Kept 100000 100000 10 0123456789", 0, false},
        {"huge.vdm", "0 Kept 32768 32768 10 0123456789", 0, false},
        {"words.vdm", "0 Kept wide 512 10 0123456789", 0, false},
        {"empty.vdm", "", -1, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        writeFile(dir.path() + "/" + c.name, c.content);
        LogCapture log;
        const ProjectData::DirectionMapData* read = readDirectionMapFile(dir.path() + "/" + c.name, loaded);
        const Image& image = read->image;
        EXPECT_EQ(log.count(Warning, dir.path() + "/" + c.name), 1);
        if (c.id >= 0) {
            EXPECT_TRUE(read->id == c.id && read->name == "Kept");
        }
        ASSERT_EQ(image.width, 512u);
        EXPECT_EQ(std::equal(image.data, image.data + firstRow, map->image.data), c.firstRowRead);
        EXPECT_EQ(image.pixelAt(511, 511)[1], 1.0f); // the rest still the default (0, 1, 0)
    }
    LogCapture log;
    writeFile(dir.path() + "/range.vdm", "4294967296 Big 512 512 ");
    readDirectionMapFile(dir.path() + "/range.vdm", loaded);
    EXPECT_EQ(log.count(Warning, "4294967296 is out of range"), 1);

    // A project that never stored a mask loads silently; a damaged one warns.
    EXPECT_FALSE(readMaskCache(dir.path() + "/Mask.cache", loaded));
    EXPECT_TRUE(log.count(Warning, "Mask.cache") == 0);
    writeFile(dir.path() + "/Mask.cache", "512 512 -1 ");
    EXPECT_FALSE(readMaskCache(dir.path() + "/Mask.cache", loaded));
    EXPECT_EQ(log.count(Warning, "-1 is out of range"), 1);
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

    // A cut cache warns once per read; once its flags and size are read it
    // keeps what it holds, a partly filled layer included.
    const QByteArray whole = readFile(path);
    LogCapture log;
    int reads = 0;
    for (int length = 0; length < whole.size() + 7; length += 7, ++reads) {
        writeFile(path, length < whole.size() ? whole.left(length) : QByteArray("0 1 0 16 16 2000000000 "));
        EXPECT_FALSE(readMixedCache(path, *back)) << length;
    }
    EXPECT_EQ(log.count(Warning, path), reads);
    writeFile(path, whole.left(whole.size() - 20));
    EXPECT_FALSE(readMixedCache(path, *back));
    ASSERT_TRUE(read.whiteResult && read.whiteResult->layerCount() == 3u);
    const Image& original = *context.whiteResult->layers[2];
    EXPECT_TRUE(std::equal(original.data, original.data + 16 * 3, read.whiteResult->layers[2]->data));

    // Flags other than 0 and 1 are refused.
    writeFile(path, "0 2 0 16 16 ");
    EXPECT_FALSE(readMixedCache(path, *back));
    EXPECT_EQ(log.count(Warning, "flag 2 is out of range"), 1);
}
