#pragma once

#include <QString>

#include <cstdint>

// The synthesizer parameter checks the engine runs before a run
// (ImageSynthesizer::checkSettings), for the panel to show beside each field
// as soon as a value is entered. Each returns an empty string for a value
// the engine accepts.
namespace ParameterCheck {

QString targetSize(int64_t width, int64_t height);
// The patch size and its boundary are checked together: a patch with its
// boundary ring on both sides must stay below the engine's limit.
QString patchSize(int64_t size, int64_t boundary);
QString patchBoundary(int64_t size, int64_t boundary);

} // namespace ParameterCheck
