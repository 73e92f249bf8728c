#pragma once

#include <QByteArray>

#include <functional>

struct FIBITMAP;

// Writes a FreeImage bitmap as PNG through libpng, so that the zlib level and
// the row filter can be chosen and progress reported row by row. Levels up
// to 3 filter every row with Up: at these levels the adaptive choice of
// filters costs more time than it saves bytes. Higher levels let libpng
// choose per row.
namespace PngWriter {

// Whether `write` handles the bitmap's type and depth: 8-bit grey, RGB and
// RGBA, and their 16-bit forms.
bool canWrite(FIBITMAP* dib);

// Writes `dib` to `path` (encoded file name) at zlib `level` 0 to 9;
// `progress`, when set, is called with the fraction of rows written. Returns
// false, with a reason, when the file cannot be written.
bool write(FIBITMAP* dib, const QByteArray& path, int level, const std::function<void(double)>& progress,
           QByteArray& reason);

} // namespace PngWriter
