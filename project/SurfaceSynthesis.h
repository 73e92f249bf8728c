#pragma once

#include "ImageSynthesizer.h"
#include "LayeredImage.h"
#include "ProjectData.h"
#include "SurfaceSynthesisContext.h"

namespace Velmor {

// Synthesizes the surface of `context` with its own current synthesizer: the
// layers' images become the source, the masked flag picks the generators, and
// with "make input seamless" plus direction or scale guidance the input's
// seams are repaired by a clone first. A mixed surface runs its four phases
// instead. The result is the synthesizer's output; a cancelled run leaves the
// output of the last completed pass. The context's cancel flag is cleared at
// the start (SynthesizerThread keeps a cancel that arrives before its run).
// `progress` may be empty. True when the output is
// complete, false when cancelled or refused (the reason is logged).
bool synthesizeSurface(SurfaceSynthesisContext& context, const ImageSynthesizer::Progress& progress);

// Asks a running synthesis to stop: the context's flag for the driver, and the
// running synthesizer's own flag so that its patch loop ends soon. Safe to
// call from any thread.
void requestCancel(SurfaceSynthesisContext& context);

// A LayeredImage over images owned elsewhere (texture records, results kept
// in a context). Its lists are emptied before destruction so that
// LayeredImage's destructor never frees what it borrowed.
class BorrowedLayers
{
public:
    BorrowedLayers() = default;
    BorrowedLayers(const BorrowedLayers&) = delete;
    BorrowedLayers& operator=(const BorrowedLayers&) = delete;
    ~BorrowedLayers()
    {
        image.layers.clear();
        image.names.clear();
        image.mask = nullptr;
    }

    LayeredImage image;
};

// The source of a surface: its layers in order, named as the layers. False,
// with an error logged, when a layer has no texture image.
bool gatherSurfaceLayers(const ProjectData::SurfaceData& surface, LayeredImage& input);

// Generator choice and guidance of one run, taken from a surface record.
struct SurfacePassSettings
{
    bool masked = false;
    bool makeInputSeamless = false;
    Image* directionMap = nullptr; // null: direction guidance off
    Image* scaleMap = nullptr;     // null: scale guidance off
};

SurfacePassSettings passSettingsOf(const ProjectData::SurfaceData& surface);

// Synthesizes `input` with `synthesizer` to the target size of its parameters:
// one direct pass, or the seam-repair pass on a clone followed by the main
// pass. Sets and clears the context's current synthesizer around each call
// and leaves the synthesizer holding no pointer to `input`. True when the
// output is complete; false when cancelled or refused by the engine (which
// has logged why).
bool runSurfacePasses(SurfaceSynthesisContext& context, ImageSynthesizer& synthesizer, LayeredImage& input,
                      const SurfacePassSettings& settings, const ImageSynthesizer::Progress& progress);

} // namespace Velmor
