#include "Image.h"
#include "MessageHandler.h"
#include "MessageSeverity.h"
#include "NormalMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {
Image colourPixel(PixelFormat format, float r, float g, float b)
{
    Image image(1, 1, format);
    image.data[0] = r;
    image.data[1] = g;
    image.data[2] = b;
    return image;
}
}

TEST(NormalMap, ConversionsAreReversible)
{
    // Colour in, vector after toNormalMap, colour again after fromNormalMap;
    // alpha is dropped for good.
    const struct { PixelFormat format; bool flipX, flipY; float colour[3], vector[3]; } cases[] = {
        {RGB, false, false, {0.5f, 0.5f, 1.0f}, {0, 0, 1}},
        {RGB, true, false, {1.0f, 0.5f, 1.0f}, {-1, 0, 1}},
        {RGBA, false, true, {0.5f, 0.0f, 0.5f}, {0, 1, 0}},
    };
    for (const auto& c : cases) {
        Image image = colourPixel(c.format, c.colour[0], c.colour[1], c.colour[2]);
        if (c.format == RGBA)
            image.data[3] = 0.7f;
        image.toNormalMap(c.flipX, c.flipY, true, true);
        ASSERT_EQ(image.format, Normal);
        for (int k = 0; k < 3; ++k)
            EXPECT_NEAR(image.data[k], c.vector[k], 1e-6f) << k;
        image.fromNormalMap();
        EXPECT_EQ(image.format, RGB);
        EXPECT_TRUE(image.flipNormalX == c.flipX && image.flipNormalY == c.flipY); // kept for the next conversion
        for (int k = 0; k < 3; ++k)
            EXPECT_FLOAT_EQ(image.data[k], c.colour[k]) << k;
    }

    // Neither conversion touches an image of the wrong kind.
    Image gray(1, 1, Gray), rgb = colourPixel(RGB, 0.2f, 0.3f, 0.4f);
    gray.data[0] = 0.3f;
    gray.toNormalMap(true, true, true, true);
    rgb.fromNormalMap();
    EXPECT_TRUE(gray.format == Gray && gray.data[0] == 0.3f && rgb.data[0] == 0.2f);
}

TEST(NormalMap, FixSlopeRemovesConstantTilt)
{
    Image map(4, 3, Normal);
    for (uint64_t i = 0; i < map.pixelCount(); ++i) {
        map.data[3 * i] = 0.1f;
        map.data[3 * i + 2] = 0.995f;
    }
    map.fixNormalMapSlope();
    for (uint64_t i = 0; i < map.floatCount(); ++i)
        EXPECT_NEAR(map.data[i], i % 3 == 2 ? 1.0f : 0.0f, 1e-6f) << i;
}

// Both averages are subtracted, then each vector is renormalised; the log
// names the two averages.
TEST(NormalMap, FixSlopeSubtractsBothAverages)
{
    Image map(2, 1, Normal);
    const float values[] = {0.3f, 0.2f, 0.9f, 0.1f, -0.4f, 0.9f}; // averages 0.2 and -0.1
    std::copy(values, values + 6, map.data);
    std::vector<std::pair<QString, int>> log;
    const auto connection = QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage,
                                             [&](QString text, int severity) { log.emplace_back(text, severity); });
    map.fixNormalMapSlope();
    QObject::disconnect(connection);
    const float length = std::sqrt(0.01f + 0.09f + 0.81f);
    const float expected[] = {0.1f, 0.3f, 0.9f, -0.1f, -0.3f, 0.9f};
    for (int i = 0; i < 6; ++i)
        EXPECT_NEAR(map.data[i], expected[i] / length, 1e-6f) << i;
    ASSERT_EQ(log.size(), 1u);
    EXPECT_EQ(log[0].first, QStringLiteral("Fixing normal map slope... Normal Map X Y average: 0.200000 -0.100000"));
    EXPECT_EQ(log[0].second, int(Info));
}

TEST(NormalMap, LayerConversionRule)
{
    Image eightBit = colourPixel(RGB, 0.5f, 0.5f, 1.0f);
    EXPECT_TRUE(convertToNormalLayer(eightBit));
    EXPECT_TRUE(eightBit.mappedNormalXY && eightBit.mappedNormalZ);
    EXPECT_FLOAT_EQ(eightBit.data[2], 1.0f);

    Image floats = colourPixel(RGBA, 0.0f, 0.0f, 1.0f);
    floats.sampleType = 7; // 32-bit float file: already signed vectors
    EXPECT_TRUE(convertToNormalLayer(floats));
    EXPECT_TRUE(floats.format == Normal && !floats.mappedNormalXY && !floats.mappedNormalZ);
    EXPECT_FLOAT_EQ(floats.data[2], 1.0f);

    Image gray(1, 1, Gray);
    EXPECT_FALSE(normalLayerRule(gray).convertible);
    EXPECT_FALSE(convertToNormalLayer(gray));
    EXPECT_EQ(gray.format, Gray);
}
