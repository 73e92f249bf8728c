#pragma once

#include "PixelDestGenerator.h"

namespace Velmor {

// Visits the whole target on a grid of patchSize steps, rows top to bottom,
// each left to right, so that the patch cores tile the target exactly; the
// first core is centred on the target's corner.
class PDG_GridAll : public PixelDestGenerator
{
public:
    bool next(int32_t& x, int32_t& y) override;
    void reset() override;
};

} // namespace Velmor
