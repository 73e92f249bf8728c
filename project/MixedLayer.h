#pragma once

#include "Image.h"

#include <cstdint>

namespace Velmor {

// The rules by which a mixed surface mixes one layer of its white surface
// with the same layer of its black surface by a mask; used by the merge of a
// synthesis run and by the preview layers of the mixed surface record.

// The mask channel that is read: a negative channel is 0, a channel the mask
// lacks is its last one.
uint32_t mixMaskChannel(int32_t channel, const Image& mask);

// Makes `out` a width x height image for the mix: of the layers' format when
// both agree (descriptors from white, the deeper sample type), else RGBA
// with a warning that the layouts differ. Pixels are kept when the format
// and size already fit.
void prepareMixedLayer(const Image& white, const Image& black, uint32_t width, uint32_t height, Image& out);

// Rows [first, last) of `out` (made by prepareMixedLayer): white, black and
// mask are each stretched over `out` (nearest), the mask value clamped to
// 0..1 is the weight of white; mixed normals are normalized again.
void mixLayerRows(const Image& white, const Image& black, const Image& mask, uint32_t maskChannel, Image& out,
                  uint32_t first, uint32_t last);

} // namespace Velmor
