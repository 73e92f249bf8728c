#pragma once

#include "Image.h"

#include <cstdint>
#include <vector>

// The connected area around pixel (x, y) whose first `compared` channels
// each differ from the seed pixel's by at most `tolerance`. Four-connected,
// and wrapping over the edges like the tiled output. Non-finite values
// match each other only. One byte per pixel, 1 inside the area; empty for an
// empty image.
std::vector<uint8_t> floodArea(const Image& image, int32_t x, int32_t y, uint32_t compared, float tolerance);
