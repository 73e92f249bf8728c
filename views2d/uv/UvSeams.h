#pragma once

#include "MeshVertex.h"

#include <cstdint>
#include <vector>

// One model edge that two triangles share while their UV edges differ. Both
// UV edges run in the same direction along the model edge: a0 and b0 are the
// UV of the same model point, as are a1 and b1.
struct UvSeam
{
    float a0[2], a1[2];
    float b0[2], b1[2];
    // The third vertex of each triangle in UV, telling which side of its
    // edge the triangle lies.
    float aInner[2], bInner[2];
    int32_t islandA = 0, islandB = 0;
};

// The UV seams of a triangle soup and its UV islands: triangles joined by
// edges that agree in model and UV space.
struct UvSeamSet
{
    std::vector<UvSeam> seams;
    // One island number per triangle, 0 .. islandCount-1.
    std::vector<int32_t> triangleIsland;
    int32_t islandCount = 0;
};

// Finds the seams of `vertices` (three per triangle). Model points closer
// than about 1e-5 count as one; edges of zero length and triangles with
// coordinates that are not numbers take no part.
UvSeamSet findUvSeams(const std::vector<MeshVertex>& vertices);
