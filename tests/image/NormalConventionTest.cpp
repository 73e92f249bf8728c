#include "Image.h"
#include "NormalConvention.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

// Bumps of a smooth height field, in rows counted from the bottom.
float bumps(int x, int y)
{
    return 0.5f + 0.2f * std::sin(0.21f * x) * std::cos(0.17f * y) + 0.1f * std::sin(0.05f * (x + 2 * y));
}

Image heightField(int size)
{
    Image height(size, size, Gray);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            height.data[x + size * y] = bumps(x, y);
    return height;
}

// The normal map of the height field as a tool writes it, stored as colour:
// X to the right and Y up, either negated when asked.
Image colourNormals(int size, bool negateX, bool negateY)
{
    Image map(size, size, RGB);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            float nx = -8.0f * (bumps(x + 1, y) - bumps(x - 1, y));
            float ny = -8.0f * (bumps(x, y + 1) - bumps(x, y - 1));
            const float length = std::sqrt(nx * nx + ny * ny + 1.0f);
            nx = (negateX ? -nx : nx) / length;
            ny = (negateY ? -ny : ny) / length;
            float* p = map.data + 3 * (x + size * y);
            p[0] = nx * 0.5f + 0.5f;
            p[1] = ny * 0.5f + 0.5f;
            p[2] = 0.5f / length + 0.5f;
        }
    return map;
}

} // namespace

TEST(NormalConvention, MapsMadeEitherWayFromOneHeightFieldAreToldApart)
{
    const Image height = heightField(64);
    for (bool negateX : {false, true})
        for (bool negateY : {false, true}) {
            SCOPED_TRACE(testing::Message() << "X negated " << negateX << ", Y negated " << negateY);
            Image map = colourNormals(64, negateX, negateY);
            map.toNormalMap(false, false, true, true);
            const NormalConvention found = detectNormalConvention(map, height);
            ASSERT_TRUE(found.decided);
            EXPECT_EQ(found.flipX, negateX);
            EXPECT_EQ(found.flipY, negateY);
            EXPECT_GT(std::fabs(found.correlationX), 0.5);
            EXPECT_GT(std::fabs(found.correlationY), 0.5);

            // Read with the flips it found, the map points the common way,
            // and written back it gives the file's colours.
            const Image original = colourNormals(64, negateX, negateY);
            flipNormalLayer(map, found.flipX, found.flipY);
            const NormalConvention again = detectNormalConvention(map, height);
            EXPECT_TRUE(again.decided && !again.flipX && !again.flipY);
            map.fromNormalMap();
            for (uint64_t i = 0; i < original.floatCount(); ++i)
                ASSERT_NEAR(map.data[i], original.data[i], 1e-5f) << i;
        }

    // A height layer half the size still tells.
    Image small(32, 32, Gray);
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 32; ++x)
            small.data[x + 32 * y] = bumps(2 * x, 2 * y);
    Image downward = colourNormals(64, false, true);
    downward.toNormalMap(false, false, true, true);
    const NormalConvention scaled = detectNormalConvention(downward, small);
    EXPECT_TRUE(scaled.decided && !scaled.flipX && scaled.flipY);
}

TEST(NormalConvention, UnrelatedOrFlatInputsDecideNothing)
{
    Image map = colourNormals(48, false, false);
    map.toNormalMap(false, false, true, true);
    // A flat height field has no slope to compare with.
    Image flat(48, 48, Gray);
    EXPECT_FALSE(detectNormalConvention(map, flat).decided);
    // A height field with no relation to the map.
    Image other(48, 48, Gray);
    for (int i = 0; i < 48 * 48; ++i)
        other.data[i] = float((i * 7919) % 101) / 101.0f;
    EXPECT_FALSE(detectNormalConvention(map, other).decided);
    // Not a normal map, or no height pixels.
    const Image colour = colourNormals(48, false, false);
    EXPECT_FALSE(detectNormalConvention(colour, heightField(48)).decided);
    EXPECT_FALSE(detectNormalConvention(map, Image()).decided);
}
