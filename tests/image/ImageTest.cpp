#include "Image.h"
#include "LayeredImage.h"

#include <gtest/gtest.h>

#include <limits>

namespace {
// Gray image whose pixel (x, y) holds x + 100 y.
Image coordinateImage(uint32_t w, uint32_t h, WrapMode mode)
{
    Image image(w, h, Gray);
    image.wrapMode = mode;
    for (uint32_t i = 0; i < w * h; ++i)
        image.data[i] = float(i % w + 100 * (i / w));
    return image;
}
}

TEST(Image, WrapRulesOfBothModes)
{
    // Beyond one period the coordinate is still folded into the image, so no
    // caller can read outside the buffer.
    const struct { WrapMode mode; int x, y; float value; } probes[] = {
        {Repeat, -1, 0, 7},    {Repeat, 8, 0, 0},     {Repeat, 17, 0, 1},      {Repeat, 3, -1, 703},
        {Repeat, 3, 9, 103},   {Repeat, -9, 0, 7},    {Repeat, -16, -17, 700}, {Clamp, -3, 20, 700},
        {Clamp, 100, -100, 7}, {Clamp, 5, 5, 505}};
    for (const auto& p : probes)
        EXPECT_EQ(coordinateImage(8, 8, p.mode).pixelAt(p.x, p.y)[0], p.value) << p.x << "," << p.y;
    Image repeat = coordinateImage(8, 8, Repeat);
    EXPECT_EQ(repeat.pixelAt(INT32_MIN, INT32_MAX)[0], repeat.pixelAt(0, INT32_MAX % 8)[0]);
    EXPECT_EQ(Image().pixelAt(0, 0).values, nullptr);

    // Views write through to the image, clones do not.
    Pixel view = repeat.pixelAt(-2, 9);
    const Pixel copy = view.clone();
    view[0] = -1.0f;
    EXPECT_TRUE(repeat.data[6 + 8] == -1.0f && copy[0] == 106.0f);
    repeat.pixelAt(0, 0) = copy;
    EXPECT_EQ(repeat.data[0], 106.0f);
}

TEST(Image, SamplingAcrossSeamsAndEdges)
{
    Image repeat = coordinateImage(8, 8, Repeat), clamp = coordinateImage(8, 8, Clamp);
    const struct { Image* image; float x, y; SampleMode mode; float value; } probes[] = {
        {&repeat, 7.5f, 0, Linear, 3.5f}, // half of x = 7 and half of x = 0
        {&repeat, -0.5f, 0, Linear, 3.5f}, {&repeat, 2.25f, 3.5f, Linear, 352.25f},
        {&repeat, 2.75f, 1, Nearest, 102}, {&clamp, 7.5f, 0, Linear, 7}, {&clamp, -4, 7.9f, Linear, 700}};
    Pixel out(Gray);
    for (const auto& p : probes) {
        p.image->sample(p.x, p.y, p.mode, out);
        EXPECT_FLOAT_EQ(out[0], p.value) << p.x << "," << p.y;
    }
    // Non-finite coordinates do not read outside the image.
    clamp.sample(std::numeric_limits<float>::quiet_NaN(), 1e30f, Linear, out);
    repeat.sample(-1e30f, std::numeric_limits<float>::infinity(), Linear, out);

    // Normals are renormalised after interpolation, colours are not.
    Pixel a(Normal), b(Normal), normal(Normal), c(RGB), d(RGB), rgb(RGB);
    a[0] = b[1] = d[0] = 1.0f;
    Pixel::lerp(a, b, 0.5f, normal);
    Pixel::lerp(c, d, 0.5f, rgb);
    EXPECT_NEAR(normal[0], 0.70710678f, 1e-6f);
    EXPECT_NEAR(normal[1], 0.70710678f, 1e-6f);
    EXPECT_EQ(normal[2], 0.0f);
    EXPECT_FLOAT_EQ(rgb[0], 0.5f);
}

TEST(Image, CopyToAndResample)
{
    Image source = coordinateImage(4, 4, Repeat);
    Image otherSize(4, 5, Gray), otherFormat(4, 4, RGB), match(4, 4, Gray);
    for (Image* target : {&otherSize, &otherFormat, &match})
        source.copyTo(*target);
    EXPECT_TRUE(otherSize.data[15] == 0.0f && otherFormat.data[15] == 0.0f); // only between matching images
    EXPECT_EQ(match.data[15], 303.0f);

    Image empty;
    empty.resample(3, 2);
    EXPECT_TRUE(empty.format == RGB && empty.width == 3 && empty.height == 2 && empty.data[17] == 0.0f);
    source.resample(8, 2);
    ASSERT_TRUE(source.width == 8 && source.height == 2);
    EXPECT_FLOAT_EQ(source.pixelAt(1, 0)[0], 0.5f);   // old x = 0.5
    EXPECT_FLOAT_EQ(source.pixelAt(2, 1)[0], 201.0f); // old (1, 2)
}

TEST(Image, DisplayImageIsTopDownAndClamped)
{
    Image image(2, 2, RGB);
    float* bottomLeft = image.pixelAt(0, 0).values;
    bottomLeft[0] = 1.0f;
    bottomLeft[1] = 2.0f;  // clamped to 255
    bottomLeft[2] = -1.0f; // clamped to 0
    image.pixelAt(1, 1).values[2] = 0.999f;
    const QImage display = image.toDisplayImage();
    ASSERT_EQ(display.format(), QImage::Format_RGB888);
    EXPECT_EQ(display.pixel(0, 1), qRgb(255, 255, 0));
    EXPECT_EQ(display.pixel(1, 0), qRgb(0, 0, 254));

    Image normal(1, 1, RGB);
    normal.data[0] = normal.data[1] = 0.5f;
    normal.data[2] = 1.0f;
    normal.toNormalMap(false, false, true, true);
    EXPECT_EQ(normal.toDisplayImage().pixel(0, 0), qRgb(127, 127, 255));
    EXPECT_TRUE(normal.format == Normal && normal.data[2] == 1.0f); // display leaves the map as it was
}

TEST(LayeredImage, SetLayerReplacesByNameAndCopiesByLayer)
{
    LayeredImage layered;
    layered.setLayer("Color", new Image(2, 2, RGB));
    Image* oldMask = new Image(2, 2, Gray);
    layered.setLayer("Mask", oldMask);
    Image* newMask = new Image(2, 2, Gray);
    layered.setLayer("Mask", newMask);
    EXPECT_EQ(layered.layer("Mask"), newMask);
    delete oldMask; // replaced images belong to the caller
    layered.setLayer("mask", new Image(1, 1, Gray)); // names compare byte-wise
    EXPECT_EQ(layered.layerCount(), 3u);

    newMask->data[3] = 1.0f;
    const LayeredPixel pixel = layered.pixelAt(1, 1);
    ASSERT_EQ(pixel.size(), 3u);
    newMask->data[3] = 2.0f;
    EXPECT_EQ(pixel[1][0], 1.0f); // a copy, not a view

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
    EXPECT_TRUE(layered.layerCount() == 0 && layered.names.empty());
}
