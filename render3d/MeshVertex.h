#pragma once

#include <cstddef>

// One vertex of a Mesh: 15 floats, interleaved, no padding. texCoord.z holds
// the vertex's UV-island number (0 for the built-in shapes).
struct MeshVertex
{
    float vertex[3];
    float normal[3];
    float texCoord[3];
    float tangent[3];
    float binormal[3];
};

static_assert(sizeof(MeshVertex) == 60, "MeshVertex must stay 15 tightly packed floats");

// Attribute locations every shader program is built with.
enum MeshAttribute : int
{
    VertexAttribute = 0,
    NormalAttribute = 1,
    TexCoordAttribute = 2,
    TangentAttribute = 3,
    BinormalAttribute = 4
};
