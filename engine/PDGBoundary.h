#pragma once

#include "PDG_GridAll.h"

namespace Velmor {

// Visits the first row and then the first column of the grid: the patches
// that straddle the target's wrapping seams. Used to make an existing image
// seamless (run with startFilled 1).
class PDGBoundary : public PixelDestGenerator
{
public:
    bool next(int32_t& x, int32_t& y) override;
    void reset() override;
};

} // namespace Velmor
