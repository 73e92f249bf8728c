#pragma once

#include "Image.h"

#include <cstdint>

// How a view uploads an Image into a GL texture: the source layout and the
// internal format by pixel format, and whether the rows go through a
// conversion on the way.
//
// Normal images are shown as colours: X negated when flipped in X, then Y
// when flipped in Y, then X and Y mapped to v * 0.5 + 0.5 when stored mapped,
// then Z likewise.
//
// Display range: the textures are 8-bit normalised, so values outside 0..1
// (float EXR or TIFF files, sums of layers) are clamped by the upload, and
// 16-bit files (read as v / 65535) show with 8-bit precision. With
// `normalise` set, the colour channels of Gray, RGB and RGBA images are
// stretched from their own minimum..maximum to 0..1 first, which makes HDR
// pictures and faint 16-bit height maps readable; alpha is never stretched.
// For Normal images `normalise` maps the components stored unmapped (-1..1,
// such as direction maps) to v * 0.5 + 0.5 as well, so that every direction
// shows instead of clamping to black.
struct TextureUpload
{
    unsigned sourceFormat = 0;   // GL_LUMINANCE, GL_RGB or GL_RGBA; 0 uploads nothing
    unsigned internalFormat = 0; // GL_RGB or GL_RGBA
    // False: the image's own floats are uploaded as they are.
    bool convert = false;

    // The conversion.
    bool normalVectors = false;
    bool mapXY = false;
    bool mapZ = false;
    float low = 0.0f;
    float scale = 1.0f;
};

TextureUpload textureUploadOf(const Image& image, bool normalise = false);

// Writes `count` rows from `first` on as they are uploaded (the image's
// channels per pixel) to `out`. The view converts a strip at a time, so that
// a large picture needs no second full-size buffer.
void displayRows(const Image& image, const TextureUpload& upload, uint32_t first, uint32_t count, float* out);
