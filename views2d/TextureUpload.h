#pragma once

#include "Image.h"

#include <vector>

// How a view uploads an Image into a GL texture: the source layout and the
// internal format by pixel format, and the pixels to hand over.
//
// Display range: the textures are 8-bit normalised, so values outside 0..1
// (float EXR or TIFF files, sums of layers) are clamped by the upload, and
// 16-bit files (read as v / 65535) show with 8-bit precision. With
// `normalise` set, the colour channels of Gray, RGB and RGBA images are
// stretched from their own minimum..maximum to 0..1 first, which makes HDR
// pictures and faint 16-bit height maps readable; alpha and Normal vectors
// are never stretched.
struct TextureUpload
{
    unsigned sourceFormat = 0;   // GL_LUMINANCE, GL_RGB or GL_RGBA; 0 uploads nothing
    unsigned internalFormat = 0; // GL_RGB or GL_RGBA
    // The pixels to upload: the image's own, or `converted`.
    const float* pixels = nullptr;
    std::vector<float> converted;
};

TextureUpload textureUploadOf(const Image& image, bool normalise = false);

// The colours a Normal image shows as: three floats per pixel, X negated when
// flipped in X, then Y when flipped in Y, then X and Y mapped to v * 0.5 + 0.5
// when stored mapped, then Z likewise.
std::vector<float> normalDisplayPixels(const Image& image);

// Colour channels (not alpha) stretched from their minimum..maximum to 0..1;
// a flat image is left as it is.
std::vector<float> normalisedPixels(const Image& image);
