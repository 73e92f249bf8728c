#include "Image.h"
#include "MessageHandler.h"
#include "NormalMap.h"

#include <gtest/gtest.h>

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
    Image image = colourPixel(RGB, 0.5f, 0.5f, 1.0f);
    image.toNormalMap(false, false, true, true);
    EXPECT_EQ(image.format, Normal);
    EXPECT_FLOAT_EQ(image.data[0], 0.0f);
    EXPECT_FLOAT_EQ(image.data[1], 0.0f);
    EXPECT_FLOAT_EQ(image.data[2], 1.0f);
    image.fromNormalMap();
    EXPECT_EQ(image.format, RGB);
    EXPECT_FLOAT_EQ(image.data[0], 0.5f);
    EXPECT_FLOAT_EQ(image.data[2], 1.0f);

    Image flipped = colourPixel(RGB, 1.0f, 0.5f, 1.0f);
    flipped.toNormalMap(true, false, true, true);
    EXPECT_FLOAT_EQ(flipped.data[0], -1.0f);
    EXPECT_FLOAT_EQ(flipped.data[1], 0.0f);
    EXPECT_TRUE(flipped.flipNormalX);
    flipped.fromNormalMap();
    EXPECT_FLOAT_EQ(flipped.data[0], 1.0f);
    EXPECT_FLOAT_EQ(flipped.data[1], 0.5f);
    EXPECT_TRUE(flipped.flipNormalX); // flags stay for the next conversion

    Image rgba(1, 1, RGBA);
    rgba.data[3] = 0.7f;
    rgba.toNormalMap(false, true, false, false);
    EXPECT_EQ(rgba.format, Normal);
    rgba.fromNormalMap();
    EXPECT_EQ(rgba.format, RGB); // alpha is gone for good

    Image gray(1, 1, Gray);
    gray.data[0] = 0.3f;
    gray.toNormalMap(true, true, true, true);
    EXPECT_EQ(gray.format, Gray);
    EXPECT_EQ(gray.data[0], 0.3f);
    Image rgb = colourPixel(RGB, 0.2f, 0.3f, 0.4f);
    rgb.fromNormalMap();
    EXPECT_EQ(rgb.data[0], 0.2f);
}

TEST(NormalMap, FixSlopeRemovesConstantTilt)
{
    Image map(4, 3, Normal);
    for (uint64_t i = 0; i < map.pixelCount(); ++i) {
        map.data[3 * i] = 0.1f;
        map.data[3 * i + 2] = 0.995f;
    }
    QString logged;
    auto connection = QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage,
                                       [&](QString text, int) { logged = text; });
    map.fixNormalMapSlope();
    QObject::disconnect(connection);
    EXPECT_TRUE(logged.startsWith("Fixing normal map slope... Normal Map X Y average: 0.100000 0.000000"))
        << logged.toStdString();
    for (uint64_t i = 0; i < map.pixelCount(); ++i) {
        EXPECT_NEAR(map.data[3 * i], 0.0f, 1e-6f);
        EXPECT_NEAR(map.data[3 * i + 1], 0.0f, 1e-6f);
        EXPECT_NEAR(map.data[3 * i + 2], 1.0f, 1e-6f);
    }

    Image rgb = colourPixel(RGB, 0.1f, 0.0f, 1.0f);
    rgb.fixNormalMapSlope();
    EXPECT_EQ(rgb.data[0], 0.1f);
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
    EXPECT_EQ(floats.format, Normal);
    EXPECT_FALSE(floats.mappedNormalXY || floats.mappedNormalZ);
    EXPECT_FLOAT_EQ(floats.data[2], 1.0f);

    Image gray(1, 1, Gray);
    EXPECT_FALSE(normalLayerRule(gray).convertible);
    EXPECT_FALSE(convertToNormalLayer(gray));
    EXPECT_EQ(gray.format, Gray);
}
