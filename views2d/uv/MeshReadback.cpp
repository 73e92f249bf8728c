#include "MeshReadback.h"

#include "Mesh.h"

std::vector<MeshVertex> readMeshVertices(Mesh& mesh)
{
    std::vector<MeshVertex> vertices;
    if (mesh.triangleCount <= 0 || !mesh.vertexBuffer.isCreated() || !mesh.vertexBuffer.bind())
        return vertices;
    const int bytes = mesh.vertexBuffer.size();
    const int expected = int(sizeof(MeshVertex)) * 3 * mesh.triangleCount;
    if (bytes == expected) {
        vertices.resize(size_t(mesh.triangleCount) * 3);
        if (!mesh.vertexBuffer.read(0, vertices.data(), bytes))
            vertices.clear();
    }
    mesh.vertexBuffer.release();
    return vertices;
}
