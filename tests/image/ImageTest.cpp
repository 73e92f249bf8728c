#include "Image.h"
#include "LayeredImage.h"

#include <gtest/gtest.h>

namespace {
// Gray image whose pixel (x, y) holds x + 100 y.
Image coordinateImage(uint32_t w, uint32_t h, WrapMode mode)
{
    Image image(w, h, Gray);
    image.wrapMode = mode;
    for (uint32_t y = 0; y < h; ++y)
        for (uint32_t x = 0; x < w; ++x)
            image.data[x + w * y] = float(x + 100 * y);
    return image;
}
}

TEST(Image, WrapRulesOfBothModes)
{
    const Image repeat = coordinateImage(8, 8, Repeat);
    EXPECT_EQ(repeat.pixelAt(-1, 0)[0], 7.0f);
    EXPECT_EQ(repeat.pixelAt(8, 0)[0], 0.0f);
    EXPECT_EQ(repeat.pixelAt(17, 0)[0], 1.0f);
    EXPECT_EQ(repeat.pixelAt(3, -1)[0], 703.0f);
    EXPECT_EQ(repeat.pixelAt(3, 9)[0], 103.0f);
    // Beyond one period the coordinate is still folded into the image, so no
    // caller can read outside the buffer.
    EXPECT_EQ(repeat.pixelAt(-9, 0)[0], 7.0f);
    EXPECT_EQ(repeat.pixelAt(-16, -17)[0], 700.0f);
    EXPECT_EQ(repeat.pixelAt(INT32_MIN, INT32_MAX)[0], repeat.pixelAt(0, INT32_MAX % 8)[0]);

    const Image clamp = coordinateImage(8, 8, Clamp);
    EXPECT_EQ(clamp.pixelAt(-3, 20)[0], 700.0f);
    EXPECT_EQ(clamp.pixelAt(100, -100)[0], 7.0f);
    EXPECT_EQ(clamp.pixelAt(5, 5)[0], 505.0f);

    // A view writes through to the image.
    Image image = coordinateImage(4, 4, Repeat);
    Pixel view = image.pixelAt(5, 1);
    EXPECT_FALSE(view.owned);
    view[0] = -1.0f;
    EXPECT_EQ(image.data[1 + 4 * 1], -1.0f);

    const Image empty;
    EXPECT_EQ(empty.format, None);
    EXPECT_EQ(empty.channels(), 0u);
    EXPECT_EQ(empty.pixelAt(0, 0).values, nullptr);
}

TEST(Image, LinearSamplingAcrossSeamsAndEdges)
{
    Image repeat = coordinateImage(8, 8, Repeat);
    Pixel out(Gray);
    repeat.sample(7.5f, 0.0f, Linear, out);
    EXPECT_FLOAT_EQ(out[0], 3.5f); // half of x = 7 and half of x = 0
    repeat.sample(-0.5f, 0.0f, Linear, out);
    EXPECT_FLOAT_EQ(out[0], 3.5f);
    repeat.sample(2.25f, 3.5f, Linear, out);
    EXPECT_FLOAT_EQ(out[0], 2.25f + 350.0f);
    repeat.sample(2.75f, 1.0f, Nearest, out);
    EXPECT_EQ(out[0], 102.0f);

    Image clamp = coordinateImage(8, 8, Clamp);
    clamp.sample(7.5f, 0.0f, Linear, out);
    EXPECT_FLOAT_EQ(out[0], 7.0f);
    clamp.sample(-4.0f, 7.9f, Linear, out);
    EXPECT_FLOAT_EQ(out[0], 700.0f);
    // Non-finite coordinates do not read outside the image.
    clamp.sample(std::numeric_limits<float>::quiet_NaN(), 1e30f, Linear, out);
    repeat.sample(-1e30f, std::numeric_limits<float>::infinity(), Linear, out);
}

TEST(Image, NormalLerpIsRenormalised)
{
    Pixel a(Normal), b(Normal), out(Normal);
    a[0] = 1.0f;
    b[1] = 1.0f;
    Pixel::lerp(a, b, 0.5f, out);
    EXPECT_NEAR(out[0], 0.70710678f, 1e-6f);
    EXPECT_NEAR(out[1], 0.70710678f, 1e-6f);
    EXPECT_EQ(out[2], 0.0f);

    Pixel c(RGB), d(RGB), rgb(RGB);
    d[0] = 1.0f;
    Pixel::lerp(c, d, 0.5f, rgb);
    EXPECT_FLOAT_EQ(rgb[0], 0.5f); // colours are not renormalised
}

TEST(Image, PixelCopiesValuesNotPointers)
{
    Image image(2, 1, RGBA);
    image.data[4] = 0.25f;
    const Pixel copy = image.pixelAt(1, 0).clone();
    EXPECT_TRUE(copy.owned);
    EXPECT_NE(copy.values, image.data + 4);
    EXPECT_EQ(copy[0], 0.25f);

    Pixel view = image.pixelAt(0, 0);
    view = copy; // assignment into a view writes the image
    EXPECT_EQ(image.data[0], 0.25f);
}

TEST(Image, CopyToOnlyBetweenMatchingImages)
{
    Image source = coordinateImage(4, 4, Repeat);
    Image otherSize(4, 5, Gray);
    Image otherFormat(4, 4, RGB);
    Image match(4, 4, Gray);
    source.copyTo(otherSize);
    source.copyTo(otherFormat);
    source.copyTo(match);
    for (uint64_t i = 0; i < otherSize.floatCount(); ++i)
        EXPECT_EQ(otherSize.data[i], 0.0f);
    for (uint64_t i = 0; i < otherFormat.floatCount(); ++i)
        EXPECT_EQ(otherFormat.data[i], 0.0f);
    EXPECT_EQ(match.data[15], 303.0f);
}

TEST(Image, ResampleAndDropAlpha)
{
    Image empty;
    empty.resample(3, 2);
    EXPECT_EQ(empty.format, RGB);
    EXPECT_EQ(empty.width, 3u);
    EXPECT_EQ(empty.height, 2u);
    for (uint64_t i = 0; i < empty.floatCount(); ++i)
        EXPECT_EQ(empty.data[i], 0.0f);

    Image image = coordinateImage(4, 4, Repeat);
    image.resample(8, 2);
    EXPECT_EQ(image.width, 8u);
    EXPECT_EQ(image.height, 2u);
    EXPECT_FLOAT_EQ(image.pixelAt(1, 0)[0], 0.5f); // old x = 0.5
    EXPECT_FLOAT_EQ(image.pixelAt(2, 1)[0], 201.0f); // old (1, 2)

    Image rgba(2, 2, RGBA);
    for (int i = 0; i < 16; ++i)
        rgba.data[i] = float(i);
    rgba.dropAlpha();
    EXPECT_EQ(rgba.format, RGBA); // the tag is the caller's to change
    EXPECT_EQ(rgba.data[3], 4.0f);
    EXPECT_EQ(rgba.data[11], 14.0f);
}

TEST(Image, DisplayImageIsTopDownAndClamped)
{
    Image image(2, 2, RGB);
    float* bottomLeft = image.pixelAt(0, 0).values;
    bottomLeft[0] = 1.0f;
    bottomLeft[1] = 2.0f;   // clamped to 255
    bottomLeft[2] = -1.0f;  // clamped to 0
    image.pixelAt(1, 1).values[2] = 0.999f;
    const QImage display = image.toDisplayImage();
    ASSERT_EQ(display.format(), QImage::Format_RGB888);
    EXPECT_EQ(display.pixel(0, 1), qRgb(255, 255, 0));
    EXPECT_EQ(display.pixel(1, 0), qRgb(0, 0, 254));

    Image gray(1, 1, Gray);
    gray.data[0] = 0.5f;
    EXPECT_EQ(gray.toDisplayImage().pixel(0, 0), qRgb(127, 127, 127));

    Image normal(1, 1, RGB);
    normal.data[0] = 0.5f;
    normal.data[1] = 0.5f;
    normal.data[2] = 1.0f;
    normal.toNormalMap(false, false, true, true);
    EXPECT_EQ(normal.toDisplayImage().pixel(0, 0), qRgb(127, 127, 255));
    EXPECT_EQ(normal.format, Normal); // display leaves the map as it was
    EXPECT_EQ(normal.data[2], 1.0f);
}

TEST(LayeredImage, SetLayerReplacesByNameAndCopiesByLayer)
{
    LayeredImage layered;
    layered.setLayer("Color", new Image(2, 2, RGB));
    Image* oldMask = new Image(2, 2, Gray);
    layered.setLayer("Mask", oldMask);
    Image* newMask = new Image(2, 2, Gray);
    layered.setLayer("Mask", newMask);
    EXPECT_EQ(layered.layerCount(), 2u);
    EXPECT_EQ(layered.layer("Mask"), newMask);
    delete oldMask; // replaced images belong to the caller
    layered.setLayer("mask", new Image(1, 1, Gray)); // names compare byte-wise
    EXPECT_EQ(layered.layerCount(), 3u);

    newMask->data[3] = 1.0f;
    const LayeredPixel pixel = layered.pixelAt(1, 1);
    ASSERT_EQ(pixel.size(), 3u);
    EXPECT_EQ(pixel[1][0], 1.0f);
    EXPECT_TRUE(pixel[1].owned);
    newMask->data[3] = 2.0f;
    EXPECT_EQ(pixel[1][0], 1.0f); // a copy, not a view
    LayeredPixel blank = LayeredImage::makeLayeredPixelLike(pixel);
    ASSERT_EQ(blank.size(), 3u);
    EXPECT_EQ(blank[0].format, RGB);
    EXPECT_EQ(blank[1][0], 0.0f);
    LayeredImage::lerp(blank, pixel, 0.25f, blank);
    EXPECT_FLOAT_EQ(blank[1][0], 0.25f);

    LayeredImage twoLayers;
    twoLayers.setLayer("a", new Image(2, 2, RGB));
    twoLayers.setLayer("b", new Image(2, 2, Gray));
    layered.copyTo(twoLayers); // layer counts differ: nothing
    EXPECT_EQ(twoLayers.layers[1]->data[3], 0.0f);

    LayeredImage target;
    target.setLayer("Color", new Image(2, 2, RGB));
    target.setLayer("Mask", new Image(2, 2, Gray));
    target.setLayer("mask", new Image(2, 2, Gray)); // size differs from source: skipped
    layered.copyTo(target);
    EXPECT_EQ(target.layers[1]->data[3], 2.0f);

    layered.deleteLayers();
    EXPECT_EQ(layered.layerCount(), 0u);
    EXPECT_TRUE(layered.names.empty());
}
