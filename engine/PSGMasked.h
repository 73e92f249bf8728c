#pragma once

#include "PixelSourceGenerator.h"

#include <utility>
#include <vector>

namespace Velmor {

// Source positions restricted by the source's mask: prepare() collects the
// positions whose whole patch lies on the mask, and next() picks among them
// through the process-wide Halton sequence. Without a mask (or when no
// position qualifies) it picks random positions over the whole source.
class PSGMasked : public PixelSourceGenerator
{
public:
    void next(int32_t& x, int32_t& y) override;
    void prepare(const LayeredImage& source) override;

    std::vector<std::pair<int32_t, int32_t>> candidates;
    bool useMask = false;
};

} // namespace Velmor
