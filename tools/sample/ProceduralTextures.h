#pragma once

#include "Image.h"

#include <cstdint>

// Seamless procedural materials for the sample project: every generator
// wraps around at the image edges, so the maps tile like real source scans.
// Row 0 is the bottom row, as everywhere in Image; normals point +Y up.
namespace ProceduralTextures {

struct Material
{
    Image color;     // RGB, 0..1
    Image normal;    // RGB colour encoding of the normal (0.5, 0.5, 1 is flat)
    Image height;    // Gray, 0..1
    Image roughness; // Gray, 0..1
};

// Rounded stones with sunken mortar joints between them.
Material cobblestones(uint32_t size, uint32_t seed);
// Soft green clumps over dark soil.
Material moss(uint32_t size, uint32_t seed);
// Loose gravel with grain at every scale, like a photo: no two places of it
// match closely, so most patches find no candidate under the default error
// threshold. The roughness map is left empty.
Material gravel(uint32_t size, uint32_t seed);
// White blobs on black (exactly 0 or 1), for mixing two materials.
Image blobMask(uint32_t size, uint32_t seed);
// Unit directions circling the centre, as a Normal image of (dx, dy, 0).
Image swirlDirections(uint32_t size);
// Scale from 0.5 on the left to 1.5 on the right.
Image scaleGradient(uint32_t size);

} // namespace ProceduralTextures
