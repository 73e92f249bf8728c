#pragma once

#include <QByteArray>

#include <functional>

struct FIBITMAP;

// Writes a FreeImage bitmap as PNG through libpng, so that the zlib level and
// the row filters can be chosen and progress reported row by row. Levels up
// to 3 filter every row with Up, which on photo-like pictures costs less time
// than libpng's choice per row saves bytes; when a sample of rows shows that
// the picture is smooth enough to shrink clearly more with every filter, it
// is written at level 3 with libpng choosing per row. Higher levels always
// let libpng choose.
namespace PngWriter {

// Whether `write` handles the bitmap's type and depth: 8-bit grey, RGB and
// RGBA, and their 16-bit forms.
bool canWrite(FIBITMAP* dib);

// Encodes `dib` into `out` at zlib `level` 0 to 9 (the caller stores the
// bytes, so that a failed disk write never replaces a good file); `progress`,
// when set, is called with the fraction of rows encoded. Returns false, with
// a reason, when it cannot be encoded.
bool write(FIBITMAP* dib, QByteArray& out, int level, const std::function<void(double)>& progress,
           QByteArray& reason);

} // namespace PngWriter
