#include "PbrPurpose.h"

#include <gtest/gtest.h>

TEST(PbrPurpose, StemRulesAreCaseSensitiveAndTheLastMatchInTestOrderWins)
{
    const std::pair<const char*, int> cases[] = {
        {"wall_color.png", 0},
        {"wall_Color.png", -1}, // case matters
        {"normal", 1},
        {"mynormal.png", -1}, // whole-stem names need the underscore otherwise
        {"rock_metal_rough.png", 4}, // metalness is tested after roughness
        {"wall_diff_normal.png", 1},
        {"wall_nor_ao.png", 5},
        {"ground_disp.tif", 2},
        {"ground_height.png", -1},
        // Only the file name counts, and the stem ends at the last dot.
        {"/data/set_normal/stone.png", -1},
        {"C:\\textures\\set_ao\\stone_col.bmp", 0},
        {"/data/stone_col.backup.png", 0},
        {"/data/stone.png_col", -1},
        {"", -1},
    };
    for (const auto& [path, purpose] : cases)
        EXPECT_EQ(pbrPurposeOfFile(QString::fromUtf8(path)), purpose) << path;
}

TEST(PbrPurpose, LayerNamesAndTheirPurposesRoundTrip)
{
    const char* const names[] = {"color", "normal", "displacement", "roughness", "metalness", "occlusion"};
    for (int i = 0; i < pbrPurposeCount; ++i) {
        EXPECT_EQ(pbrLayerName(i), QLatin1String(names[i]));
        EXPECT_EQ(pbrPurposeOfLayerName(pbrLayerName(i)), i);
        EXPECT_EQ(pbrPurposeOfFile(pbrLayerName(i) + ".png"), i); // a file named exactly after the layer
    }
    EXPECT_TRUE(pbrLayerName(-1).isEmpty() && pbrLayerName(pbrPurposeCount).isEmpty());
    EXPECT_EQ(pbrPurposeOfLayerName("Color"), -1);
}
