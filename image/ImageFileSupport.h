#pragma once

#include "PixelFormat.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

// Helpers shared by the FreeImage and libtiff halves of image file I/O.

// Installs, once per process, message handlers that keep FreeImage and libtiff
// from printing to stderr. Their last error is kept per thread instead, so that
// a failed load can say what the library complained about.
void prepareImageLibraries();
void clearImageLibraryMessage();
QString imageLibraryMessage();

// The path as the C libraries expect it (UTF-8 on Linux, so non-ASCII names work).
QByteArray encodedPath(const QString& path);

// Logs the error that names the file a load failed on; `reason` may be empty,
// in which case the library's last message (if any) is given instead.
void logLoadFailure(const QString& path, const QString& reason = QString());

// True when width x height is within maxImageSide and maxImagePixels; logs an
// error naming the file otherwise (also for an image without pixels).
bool imageSizeAllowed(const QString& path, uint64_t width, uint64_t height);

// Allocates width x height x channels floats without throwing; logs an error
// naming the file and returns null when memory runs out.
float* allocatePixels(const QString& path, uint32_t width, uint32_t height, uint32_t channels);

class Image;

// Hands `pixels` (from allocatePixels) to `image` in place of its buffer and
// records the size, format and origin. Wrap mode and normal-map flags stay, as
// with Image::allocate.
void adoptPixels(Image& image, float* pixels, uint32_t width, uint32_t height, PixelFormat format,
                 uint32_t fileType, uint32_t sampleType);
