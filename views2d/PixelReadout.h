#pragma once

#include "Image.h"

#include <QPointF>
#include <QString>

// The status-bar text for the pixel under the cursor: "x 12  y 40  0.500 0.250
// 1.000" with the stored values (before any display conversion), image rows
// counted from the bottom like the pixels. Empty outside the image or for an
// empty image. `texture` is in texture coordinates (0..1 over the image).
QString pixelReadout(const Image& image, QPointF texture);
