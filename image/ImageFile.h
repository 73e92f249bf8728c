#pragma once

#include "Image.h"

#include <QString>

#include <cstdint>
#include <functional>

// What the loader found in a file, filled alongside the image: its size, the
// bits per pixel FreeImage reports for it (before palette or CMYK files are
// expanded to colour) and the channel count of the loaded image.
struct ImageFileInfo
{
    uint32_t width = 0, height = 0, bitsPerPixel = 0, channels = 0;
};

// Loads `path` into `image` (reallocated); returns false and leaves `image` untouched on failure,
// after logging an Error naming the file. The image's wrap mode and normal-map flags are kept.
bool loadImage(ImageFileInfo& info, const QString& path, Image& image);

// Saves by the extension of `path` at the depth given by image.sampleType; a Normal image is
// written as colour and stays a Normal image. Writes to a temporary name in the same folder and
// renames into place. Returns false after logging "Unable to save output file." on failure.
// When the format cannot hold the image's depth (a 16-bit image saved as JPEG, an 8-bit image
// saved as EXR), the 8-bit or the float layout of the same channels is written instead.
// `pngLevel` 1 (fastest) to 9 (smallest) sets the zlib level of PNG files and reports `progress`
// (the fraction written) while they are written; 0 keeps FreeImage's writer and zlib's default.
bool saveImage(const QString& path, const Image& image, int pngLevel = 0,
               const std::function<void(double)>& progress = {});

// The extension (".png", ".tif", ...) that saveImage uses for a file type value, e.g. for the
// "Save Generated Images" rule; ".png" for unknown types.
QString extensionForFileType(uint32_t fileType);

// The largest image the loaders accept, checked from the file header before any pixel is read.
constexpr uint32_t maxImageSide = 32768;
constexpr uint64_t maxImagePixels = uint64_t(1) << 28;
