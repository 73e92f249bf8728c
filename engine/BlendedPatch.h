#pragma once

#include "Patch.h"

#include <vector>

namespace Velmor {

// Pastes the core unchanged and cross-fades the boundary ring into what is
// already there: the weight falls linearly from the core to the ring's outer
// edge, with quarter-circle corners.
class BlendedPatch : public Patch
{
public:
    void paste(uint8_t* filledMask, const Image* writeMask) override;

private:
    void makeWeights();

    // Per full-patch pixel: 1 in the core, 1 - d in the ring, -1 outside the
    // rounded corners.
    std::vector<float> weights;
    int32_t weightsSize = -1;
    int32_t weightsBoundary = -1;
};

} // namespace Velmor
