#pragma once

#include "PixelSourceGenerator.h"

namespace Velmor {

// Random source positions with the whole patch inside the source.
class PSGBoundaryAll : public PixelSourceGenerator
{
public:
    void next(int32_t& x, int32_t& y) override;
};

} // namespace Velmor
