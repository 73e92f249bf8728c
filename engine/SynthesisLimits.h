#pragma once

#include <cstdint>

namespace Velmor {

// The largest settings ImageSynthesizer::checkSettings accepts; the window's
// parameter panel checks entered values against the same numbers.
constexpr int64_t maxTargetSide = 32768;
constexpr int64_t maxTargetPixels = int64_t(1) << 28;
// Bounds the per-patch work images (fullSize x fullSize floats).
constexpr int64_t maxFullPatchSize = 4096;

// Ranges of the settings a record file may hold; the record reader warns
// about a value outside them and keeps the default. checkSettings then
// refuses what still does not fit together (size plus twice the boundary
// above maxFullPatchSize, a target side above maxTargetSide).
//   PatchSize     1 .. maxRecordPatchSize
//   PatchBoundary 0 .. maxRecordPatchBoundary
//   MaxTries      1 .. maxRecordTries (0 or less would never end a patch)
constexpr int64_t maxRecordPatchSize = maxFullPatchSize;
constexpr int64_t maxRecordPatchBoundary = maxFullPatchSize / 2;
constexpr int64_t maxRecordTries = 1000000;

} // namespace Velmor
