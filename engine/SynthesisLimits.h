#pragma once

#include <cstdint>

namespace Velmor {

// The largest settings ImageSynthesizer::checkSettings accepts; the window's
// parameter panel checks entered values against the same numbers.
constexpr int64_t maxTargetSide = 32768;
constexpr int64_t maxTargetPixels = int64_t(1) << 28;
// Bounds the per-patch work images (fullSize x fullSize floats).
constexpr int64_t maxFullPatchSize = 4096;

} // namespace Velmor
