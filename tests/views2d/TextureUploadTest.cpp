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

// Every row as the view uploads it.
std::vector<float> shown(const Image& image, bool normalise = false)
{
    std::vector<float> pixels(image.floatCount());
    const TextureUpload upload = textureUploadOf(image, normalise);
    // Two strips, as the view converts them, must join up.
    displayRows(image, upload, 0, 1, pixels.data());
    if (image.height > 1)
        displayRows(image, upload, 1, image.height, pixels.data() + uint64_t(image.width) * image.channels());
    return pixels;
}

} // namespace

TEST(TextureUploadTest, FormatsFollowTheUploadTable)
{
    Image gray = filled(2, 2, Gray, {0.5f});
    TextureUpload upload = textureUploadOf(gray);
    EXPECT_EQ(upload.sourceFormat, unsigned(GL_LUMINANCE));
    EXPECT_EQ(upload.internalFormat, unsigned(GL_RGB));
    EXPECT_FALSE(upload.convert); // uploaded in place

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
    EXPECT_TRUE(upload.convert);

    // Nothing for None and for an empty image.
    Image none;
    EXPECT_EQ(textureUploadOf(none).sourceFormat, 0u);
    Image noData(4, 4, None);
    EXPECT_EQ(textureUploadOf(noData).sourceFormat, 0u);
}

TEST(TextureUploadTest, NormalConversionFlipsBeforeMapping)
{
    Image normal = filled(1, 2, Normal, {0.2f, 0.4f, 0.8f});
    // Flip-Y and mapped XY: Y is negated first, then offset: -0.4 * 0.5 + 0.5.
    normal.flipNormalY = true;
    normal.mappedNormalXY = true;
    std::vector<float> colours = shown(normal);
    ASSERT_EQ(colours.size(), 6u);
    EXPECT_FLOAT_EQ(colours[0], 0.6f);
    EXPECT_FLOAT_EQ(colours[1], 0.3f);
    EXPECT_FLOAT_EQ(colours[2], 0.8f);
    EXPECT_FLOAT_EQ(colours[4], 0.3f); // the second strip too
    // The image itself is untouched.
    EXPECT_FLOAT_EQ(normal.data[1], 0.4f);

    normal.flipNormalY = false;
    normal.flipNormalX = true;
    normal.mappedNormalZ = true;
    colours = shown(normal);
    EXPECT_FLOAT_EQ(colours[0], 0.4f);
    EXPECT_FLOAT_EQ(colours[1], 0.7f);
    EXPECT_FLOAT_EQ(colours[2], 0.9f);

    // Without flags the vector is shown as stored.
    normal.flipNormalX = normal.mappedNormalXY = normal.mappedNormalZ = false;
    colours = shown(normal);
    EXPECT_FLOAT_EQ(colours[0], 0.2f);
    EXPECT_FLOAT_EQ(colours[1], 0.4f);

    // Normalised, what is stored unmapped is mapped, and only that.
    Image vector = filled(1, 1, Normal, {-1.0f, 0.5f, 1.0f});
    vector.mappedNormalZ = true;
    colours = shown(vector, true);
    EXPECT_FLOAT_EQ(colours[0], 0.0f);
    EXPECT_FLOAT_EQ(colours[1], 0.75f);
    EXPECT_FLOAT_EQ(colours[2], 1.0f);
}

TEST(TextureUploadTest, NormaliseStretchesColourButNotAlpha)
{
    // An HDR pixel pair: 0.5 .. 4.5 becomes 0 .. 1, alpha stays.
    Image hdr(1, 2, RGBA);
    const float values[] = {0.5f, 1.5f, 2.5f, 0.3f, 4.5f, 0.5f, NAN, 0.7f};
    std::copy(values, values + 8, hdr.data);
    std::vector<float> colours = shown(hdr, true);
    EXPECT_FLOAT_EQ(colours[0], 0.0f);
    EXPECT_FLOAT_EQ(colours[1], 0.25f);
    EXPECT_FLOAT_EQ(colours[2], 0.5f);
    EXPECT_FLOAT_EQ(colours[3], 0.3f);
    EXPECT_FLOAT_EQ(colours[4], 1.0f);
    EXPECT_FALSE(std::isnan(colours[6]));
    EXPECT_FLOAT_EQ(colours[7], 0.7f);
    // Without normalising the values go up unchanged (the texture clamps).
    EXPECT_FALSE(textureUploadOf(hdr).convert);

    // A faint 16-bit height map fills the range; a flat image stays as it is.
    Image faint = filled(2, 1, Gray, {0.01f, 0.03f});
    EXPECT_FLOAT_EQ(shown(faint, true)[1], 1.0f);
    Image flat = filled(3, 1, Gray, {2.0f});
    EXPECT_FALSE(textureUploadOf(flat, true).convert);

    // Rows past the end are not written.
    float guard[4] = {7.0f, 7.0f, 7.0f, 7.0f};
    displayRows(faint, textureUploadOf(faint, true), 1, 5, guard);
    EXPECT_EQ(guard[0], 7.0f);
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
