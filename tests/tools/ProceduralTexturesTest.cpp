#include "ProceduralTextures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

const uint32_t size = 256;

float value(const Image& image, int32_t x, int32_t y, uint32_t channel = 0)
{
    return image.pixelAt(x, y)[channel];
}

// The normal map decodes to unit vectors facing up, and leans away from the
// uphill side wherever the height has a clear slope: +X where the height
// falls to the right, +Y where it falls towards the top row.
void expectNormalsFollowHeight(const ProceduralTextures::Material& m)
{
    int sloped = 0, agreeing = 0;
    for (int32_t y = 0; y < int32_t(size); ++y)
        for (int32_t x = 0; x < int32_t(size); ++x) {
            const float nx = 2.0f * value(m.normal, x, y, 0) - 1.0f;
            const float ny = 2.0f * value(m.normal, x, y, 1) - 1.0f;
            const float nz = 2.0f * value(m.normal, x, y, 2) - 1.0f;
            ASSERT_NEAR(nx * nx + ny * ny + nz * nz, 1.0f, 1e-4f);
            ASSERT_GT(nz, 0.0f);
            const float dx = value(m.height, x + 1, y) - value(m.height, x - 1, y);
            const float dy = value(m.height, x, y + 1) - value(m.height, x, y - 1);
            for (const auto& [slope, component] : {std::pair{dx, nx}, std::pair{dy, ny}})
                if (std::fabs(slope) > 0.02f) {
                    ++sloped;
                    agreeing += (slope > 0) == (component < 0);
                }
        }
    ASSERT_GT(sloped, int(size * size / 50));
    EXPECT_EQ(agreeing, sloped);
}

// Stepping across the wrap-around edge changes a map no more than stepping
// between neighbouring columns inside it does.
void expectSeamless(const Image& image)
{
    double inner = 0.0, seamX = 0.0, seamY = 0.0;
    const int32_t n = int32_t(size);
    for (int32_t i = 0; i < n; ++i)
        for (uint32_t c = 0; c < image.channels(); ++c) {
            for (int32_t x = 0; x + 1 < n; ++x)
                inner += std::fabs(value(image, x + 1, i, c) - value(image, x, i, c)) / double(n - 1);
            seamX += std::fabs(value(image, 0, i, c) - value(image, n - 1, i, c));
            seamY += std::fabs(value(image, i, 0, c) - value(image, i, n - 1, c));
        }
    EXPECT_LT(std::max(seamX, seamY), 2.0 * inner + 1.0);
}

} // namespace

TEST(ProceduralTextures, MaterialsAreInRangeTileAndHaveMatchingNormals)
{
    for (const ProceduralTextures::Material& m :
         {ProceduralTextures::cobblestones(size, 17), ProceduralTextures::moss(size, 29)}) {
        // Every map has the size, format and 0..1 range it promises, and tiles.
        const std::pair<const Image*, PixelFormat> maps[] = {
            {&m.color, RGB}, {&m.normal, RGB}, {&m.height, Gray}, {&m.roughness, Gray}};
        for (const auto& [image, format] : maps) {
            ASSERT_TRUE(image->width == size && image->height == size && image->format == format);
            const auto [low, high] = std::minmax_element(image->data, image->data + image->floatCount());
            ASSERT_TRUE(*low >= 0.0f && *high <= 1.0f);
            expectSeamless(*image);
        }
        expectNormalsFollowHeight(m);
    }
}

TEST(ProceduralTextures, SwirlAndScaleGradient)
{
    // Unit directions, tangent to circles around the centre, counter-clockwise,
    // including the pixels next to the centre.
    for (uint32_t n : {size, 7u}) {
        const Image swirl = ProceduralTextures::swirlDirections(n);
        ASSERT_EQ(swirl.format, Normal);
        for (int32_t y = 0; y < int32_t(n); ++y)
            for (int32_t x = 0; x < int32_t(n); ++x) {
                const float rx = float(x) + 0.5f - 0.5f * float(n), ry = float(y) + 0.5f - 0.5f * float(n);
                const Pixel p = swirl.pixelAt(x, y);
                ASSERT_NEAR(p[0] * p[0] + p[1] * p[1], 1.0f, 1e-5f) << x << ", " << y;
                ASSERT_EQ(p[2], 0.0f);
                const float radius = std::sqrt(rx * rx + ry * ry);
                if (radius == 0.0f)
                    continue; // the centre of an odd size: any unit direction
                ASSERT_NEAR((rx * p[0] + ry * p[1]) / radius, 0.0f, 1e-5f);
                ASSERT_GT(rx * p[1] - ry * p[0], 0.0f);
            }
    }

    // Scale rises from 0.5 at the left edge to 1.5 at the right.
    const Image scale = ProceduralTextures::scaleGradient(size);
    EXPECT_FLOAT_EQ(value(scale, 0, 9), 0.5f);
    EXPECT_FLOAT_EQ(value(scale, int32_t(size) - 1, 9), 1.5f);
    for (int32_t x = 1; x < int32_t(size); ++x)
        ASSERT_GT(value(scale, x, 3), value(scale, x - 1, 3));
    EXPECT_TRUE(std::isfinite(value(ProceduralTextures::scaleGradient(1), 0, 0)));
}
