#pragma once

#include "MeshVertex.h"

#include <QString>

#include <cstdint>
#include <vector>

// A mesh on the CPU, three vertices per triangle, before it is uploaded.
// Built on any thread; Mesh uploads it on the GUI thread.
struct MeshData
{
    std::vector<MeshVertex> vertices;
    // UV islands of the last mesh of the file (labels restart per mesh).
    int32_t islandCount = 1;

    int32_t triangleCount() const { return int32_t(vertices.size() / 3); }
};

// The built-in shapes. Every shape supplies all five attributes.
MeshData makePlane();
MeshData makeCube();
MeshData makeSphere(int segments = 32, int rings = 32);
MeshData makeCylinder(int segments = 32, int lengthSegments = 1);
MeshData makeTriangle();

// Imports a model file through assimp: every mesh of the scene in order,
// UV islands labelled per mesh, positions normalised into the unit sphere.
// `ok` is false when assimp returns no scene; the data is then empty.
MeshData importMeshFile(const QString& path, bool* ok = nullptr);

// Moves positions so that the bounding box is centred at the origin and its
// half-diagonal is 1. Normals, tangents and UVs stay as they are.
void normalizeToUnitSphere(std::vector<MeshVertex>& vertices);
