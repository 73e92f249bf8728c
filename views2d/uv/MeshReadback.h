#pragma once

#include "MeshVertex.h"

#include <vector>

class Mesh;

// The mesh's vertices read back from its vertex buffer (the CPU copy is freed
// after upload). The mesh's context must be current; empty when the buffer
// cannot be read.
std::vector<MeshVertex> readMeshVertices(Mesh& mesh);
