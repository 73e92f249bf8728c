#pragma once

#include "LayeredImage.h"
#include "ProjectData.h"

#include <atomic>
#include <memory>
#include <optional>

namespace Velmor {

class ImageSynthesizer;

// Run state of one surface's synthesis: the intermediate results that a
// mixed surface keeps between runs (so frozen parts can be reused), the
// cancel flag and the synthesizer running now. The flags are written by the
// GUI thread and polled by the synthesis thread.
class SurfaceSynthesisContext
{
public:
    explicit SurfaceSynthesisContext(ProjectData::SurfaceData* owner) : surface(owner) {}

    ProjectData::SurfaceData* surface = nullptr;
    std::unique_ptr<LayeredImage> maskResult;
    std::unique_ptr<LayeredImage> whiteResult;
    std::unique_ptr<LayeredImage> blackResult;
    std::atomic<bool> cancelRequested{false};
    std::atomic<ImageSynthesizer*> currentSynthesizer{nullptr};
    // Handed to every synthesizer the run uses; set it for reproducible
    // output (command line, tests), leave it empty to seed from the clock.
    std::optional<uint32_t> seed;
};

} // namespace Velmor
