#pragma once

#include "ImageSynthesizer.h"
#include "ProjectData.h"
#include "SurfaceSynthesisContext.h"

namespace Velmor {

// The four phases of a mixed surface: the mask, the white surface and the
// black surface are each synthesized or only filled to the target size (or,
// when frozen, kept from the previous run in the context), then merged into
// the output of the mixed surface's own synthesizer. Called by
// synthesizeSurface after its start message. A cancel ends the run between or
// inside passes; the results of completed phases stay in the context. True
// when the merged output is complete.
bool synthesizeMixedSurface(SurfaceSynthesisContext& context, ProjectData::MixedSurfaceData& mixed,
                            const ImageSynthesizer::Progress& progress);

// Fills `target` (allocated, of the source's format) from `source`: tiled, it
// repeats the source at its own pixel size (target (x, y) reads source
// (x mod w, y mod h)); otherwise it stretches the source over the target,
// sampling at (x * w / targetWidth, y * h / targetHeight) with `mode`.
// Does nothing when the formats differ or either image is empty.
void fillFromSource(const Image& source, Image& target, bool tile, SampleMode mode);

} // namespace Velmor
