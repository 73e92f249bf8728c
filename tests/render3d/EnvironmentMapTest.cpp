#include "EnvironmentMap.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace {

EnvironmentLevel gradient(uint32_t width, uint32_t height)
{
    EnvironmentLevel level;
    level.width = width;
    level.height = height;
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x)
            level.rgb.insert(level.rgb.end(), {float(x) / width * 4.0f, float(y) / height, 0.5f});
    return level;
}

} // namespace

TEST(EnvironmentMap, SetLoadsFromFilesAndFiltersMissingLevels)
{
    QTemporaryDir dir;
    const EnvironmentLevel sharp = gradient(64, 32);
    ASSERT_TRUE(saveRadianceHdr(dir.filePath("envmap1.hdr"), sharp));
    // A blurred level of the wrong size is replaced by filtering.
    ASSERT_TRUE(saveRadianceHdr(dir.filePath("envmap2.hdr"), gradient(10, 10)));
    EnvironmentLevel level2 = gradient(16, 8);
    ASSERT_TRUE(saveRadianceHdr(dir.filePath("envmap3.hdr"), level2));

    const EnvironmentMap map = loadEnvironmentSet(dir.path());
    ASSERT_FALSE(map.isEmpty());
    EXPECT_EQ(map.levels[0].width, 64u);
    EXPECT_EQ(map.levels[1].width, 32u);
    EXPECT_EQ(map.levels[2].width, 16u);
    EXPECT_EQ(map.levels[3].width, 8u);
    EXPECT_EQ(map.levels[3].height, 4u);
    // Radiance files keep about 1% precision; row 0 stays at the bottom.
    EXPECT_NEAR(map.levels[0].rgb[(5 * 64 + 40) * 3], sharp.rgb[(5 * 64 + 40) * 3], 0.03f);
    EXPECT_NEAR(map.levels[0].rgb[(5 * 64 + 40) * 3 + 1], 5.0f / 32.0f, 0.01f);
    EXPECT_NEAR(map.levels[2].rgb[(3 * 16 + 8) * 3], level2.rgb[(3 * 16 + 8) * 3], 0.03f);
}

TEST(EnvironmentMap, MissingOrBrokenSetGivesAPlainEnvironment)
{
    QTemporaryDir dir;
    const EnvironmentMap missing = loadEnvironmentSet(dir.filePath("nothing"));
    ASSERT_FALSE(missing.isEmpty());
    EXPECT_FLOAT_EQ(missing.levels[3].rgb[0], 0.5f);

    QFile broken(dir.filePath("envmap1.hdr"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 99999999 +X 99999999\n");
    broken.close();
    EXPECT_FALSE(loadEnvironmentSet(dir.path()).isEmpty());
}

TEST(EnvironmentMap, FilteringHalvesAndKeepsAConstantConstant)
{
    const EnvironmentMap plain = plainEnvironment(0.2f, 0.4f, 0.6f);
    const EnvironmentLevel half = filterEnvironmentLevel(plain.levels[0]);
    EXPECT_EQ(half.width, plain.levels[0].width / 2);
    for (size_t i = 0; i < half.rgb.size(); i += 3) {
        EXPECT_NEAR(half.rgb[i], 0.2f, 1e-6f);
        EXPECT_NEAR(half.rgb[i + 2], 0.6f, 1e-6f);
    }
}
