#pragma once

#include <cstdint>

class Image;

// The side of the square output mask for a generated image of w x h: the
// larger side, each first rounded up to an even number.
uint32_t islandMaskSide(uint32_t width, uint32_t height);

// Writes a read-back island raster (RGBA bytes, `mask`'s size, row 0 at the
// bottom) into channel 0 of `mask`, grown by a 10 x 10 maximum over columns
// x-5 .. x+4 and rows y-5 .. y+4 (one texel longer towards lower
// coordinates) so that the mask covers the seams. A texel counts when its red
// byte is above 0. `add` accumulates into the mask, clamped to 1.0.
void writeIslandMask(const unsigned char* rgba, Image& mask, bool add);
