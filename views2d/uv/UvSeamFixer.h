#pragma once

#include "MeshVertex.h"
#include "UvSeams.h"

#include <vector>

class Image;

// Removes the seam lines a synthesized texture shows on a model where UV
// islands meet. Along each UV seam the texels of both UV edges are moved
// towards their common value (fully within a texel of the edge, fading out
// over `fadeTexels` into the island), then every island is padded outward by
// `paddingTexels` into unused texels, so that coarser mipmap levels do not
// pull in the background. Texels far from seams and islands stay as they are;
// Normal layers stay unit vectors.
class UvSeamFixer
{
public:
    static constexpr int fadeTexels = 5;
    static constexpr int paddingTexels = 8;

    explicit UvSeamFixer(const std::vector<MeshVertex>& vertices);

    // Fixes one layer at its own resolution.
    void fix(Image& layer) const;

    const UvSeamSet& seamSet() const { return seams; }

private:
    // Island number per texel (-1 where no triangle covers its centre).
    std::vector<int32_t> coverage(uint32_t width, uint32_t height) const;
    // Blends both sides of every seam; marks in `filled` the uncovered
    // texels it set to the common value.
    void blendSeams(Image& layer, const std::vector<int32_t>& owner, std::vector<uint8_t>& filled) const;
    void pad(Image& layer, std::vector<uint8_t>& filled) const;

    UvSeamSet seams;
    // u, v of the three corners of every triangle that takes part.
    std::vector<float> triangleUvs;
    std::vector<int32_t> triangleIslands;
};

// Fixes every layer alike for the mesh, so that they stay in register, and
// logs "UV seams fixed!". Returns false, after a warning, when there is no
// mesh or no layer to fix.
bool fixUvSeams(const std::vector<MeshVertex>& vertices, const std::vector<Image*>& layers);
