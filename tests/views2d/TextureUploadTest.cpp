#include "PixelReadout.h"
#include "TextureUpload.h"

#include <gtest/gtest.h>

#include <qopengl.h>

#include <cmath>

namespace {

Image filled(uint32_t width, uint32_t height, PixelFormat format, std::initializer_list<float> values)
{
    Image image(width, height, format);
    const std::vector<float> v(values);
    for (uint64_t i = 0; i < image.floatCount(); ++i)
        image.data[i] = v[i % v.size()];
    return image;
}

} // namespace

TEST(TextureUploadTest, FormatsFollowTheUploadTable)
{
    Image gray = filled(2, 2, Gray, {0.5f});
    TextureUpload upload = textureUploadOf(gray);
    EXPECT_EQ(upload.sourceFormat, unsigned(GL_LUMINANCE));
    EXPECT_EQ(upload.internalFormat, unsigned(GL_RGB));
    EXPECT_EQ(upload.pixels, gray.data); // uploaded in place, no copy

    Image rgb = filled(2, 2, RGB, {0.1f, 0.2f, 0.3f});
    upload = textureUploadOf(rgb);
    EXPECT_EQ(upload.sourceFormat, unsigned(GL_RGB));
    EXPECT_EQ(upload.internalFormat, unsigned(GL_RGB));

    Image rgba = filled(2, 2, RGBA, {0.1f, 0.2f, 0.3f, 0.4f});
    upload = textureUploadOf(rgba);
    EXPECT_EQ(upload.sourceFormat, unsigned(GL_RGBA));
    EXPECT_EQ(upload.internalFormat, unsigned(GL_RGBA));

    Image normal = filled(2, 2, Normal, {0.0f, 0.0f, 1.0f});
    upload = textureUploadOf(normal);
    EXPECT_EQ(upload.sourceFormat, unsigned(GL_RGB));
    EXPECT_EQ(upload.internalFormat, unsigned(GL_RGB));
    ASSERT_EQ(upload.converted.size(), 12u);
    EXPECT_EQ(upload.pixels, upload.converted.data());

    // Nothing for None and for an empty image.
    Image none;
    EXPECT_EQ(textureUploadOf(none).pixels, nullptr);
    Image noData(4, 4, None);
    EXPECT_EQ(textureUploadOf(noData).sourceFormat, 0u);
}

TEST(TextureUploadTest, NormalConversionFlipsBeforeMapping)
{
    Image normal = filled(1, 1, Normal, {0.2f, 0.4f, 0.8f});
    // Flip-Y and mapped XY: Y is negated first, then offset: -0.4 * 0.5 + 0.5.
    normal.flipNormalY = true;
    normal.mappedNormalXY = true;
    std::vector<float> shown = normalDisplayPixels(normal);
    ASSERT_EQ(shown.size(), 3u);
    EXPECT_FLOAT_EQ(shown[0], 0.6f);
    EXPECT_FLOAT_EQ(shown[1], 0.3f);
    EXPECT_FLOAT_EQ(shown[2], 0.8f);
    // The image itself is untouched.
    EXPECT_FLOAT_EQ(normal.data[1], 0.4f);

    normal.flipNormalY = false;
    normal.flipNormalX = true;
    normal.mappedNormalZ = true;
    shown = normalDisplayPixels(normal);
    EXPECT_FLOAT_EQ(shown[0], 0.4f);
    EXPECT_FLOAT_EQ(shown[1], 0.7f);
    EXPECT_FLOAT_EQ(shown[2], 0.9f);

    // Without flags the vector is shown as stored.
    normal.flipNormalX = normal.mappedNormalXY = normal.mappedNormalZ = false;
    shown = normalDisplayPixels(normal);
    EXPECT_FLOAT_EQ(shown[0], 0.2f);
    EXPECT_FLOAT_EQ(shown[1], 0.4f);
}

TEST(TextureUploadTest, NormaliseStretchesColourButNotAlpha)
{
    // An HDR pixel pair: 0.5 .. 4.5 becomes 0 .. 1, alpha stays.
    Image hdr(2, 1, RGBA);
    const float values[] = {0.5f, 1.5f, 2.5f, 0.3f, 4.5f, 0.5f, NAN, 0.7f};
    std::copy(values, values + 8, hdr.data);
    const TextureUpload upload = textureUploadOf(hdr, true);
    ASSERT_EQ(upload.converted.size(), 8u);
    EXPECT_FLOAT_EQ(upload.pixels[0], 0.0f);
    EXPECT_FLOAT_EQ(upload.pixels[1], 0.25f);
    EXPECT_FLOAT_EQ(upload.pixels[2], 0.5f);
    EXPECT_FLOAT_EQ(upload.pixels[3], 0.3f);
    EXPECT_FLOAT_EQ(upload.pixels[4], 1.0f);
    EXPECT_FALSE(std::isnan(upload.pixels[6]));
    EXPECT_FLOAT_EQ(upload.pixels[7], 0.7f);

    // A faint 16-bit height map fills the range; a flat image stays as it is.
    Image faint = filled(2, 1, Gray, {0.01f, 0.03f});
    EXPECT_FLOAT_EQ(normalisedPixels(faint)[1], 1.0f);
    Image flat = filled(3, 1, Gray, {2.0f});
    EXPECT_FLOAT_EQ(normalisedPixels(flat)[0], 2.0f);
    // Normal images keep their own conversion.
    Image normal = filled(1, 1, Normal, {0.0f, 0.0f, 1.0f});
    EXPECT_FLOAT_EQ(textureUploadOf(normal, true).pixels[2], 1.0f);
}

TEST(PixelReadoutTest, ReadsTheStoredPixelUnderTheCursor)
{
    Image image(4, 2, RGB);
    float* pixel = image.data + 3 * (3 + 4 * 1); // x 3, y 1: the top right
    pixel[0] = 1.25f;
    pixel[1] = -0.5f;
    pixel[2] = 0.125f;
    EXPECT_EQ(pixelReadout(image, QPointF(0.9, 0.9)), QStringLiteral("x 3  y 1  1.250 -0.500 0.125"));
    EXPECT_EQ(pixelReadout(image, QPointF(0.0, 0.0)), QStringLiteral("x 0  y 0  0.000 0.000 0.000"));
    // Outside the image, on its far edges and for an empty image: nothing.
    EXPECT_TRUE(pixelReadout(image, QPointF(1.0, 0.5)).isEmpty());
    EXPECT_TRUE(pixelReadout(image, QPointF(-0.01, 0.5)).isEmpty());
    EXPECT_TRUE(pixelReadout(image, QPointF(0.5, NAN)).isEmpty());
    EXPECT_TRUE(pixelReadout(Image(), QPointF(0.5, 0.5)).isEmpty());
}
