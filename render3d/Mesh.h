#pragma once

#include "MeshData.h"

#include <QOpenGLBuffer>
#include <QOpenGLFunctions>
#include <QOpenGLVertexArrayObject>

#include <cstdint>
#include <vector>

// A triangle soup on the GPU: one interleaved vertex buffer of MeshVertex,
// three per triangle, drawn with one call. Made and drawn with the owning
// view's context current.
class Mesh : public QOpenGLFunctions
{
public:
    enum Shape
    {
        Plane,
        Cube,
        Sphere,
        Cylinder,
        Triangle
    };

    explicit Mesh(Shape shape);
    // Uploads data imported or built elsewhere (model files are imported off
    // the GUI thread).
    explicit Mesh(const MeshData& data);
    Mesh(const Mesh&) = delete;
    Mesh& operator=(const Mesh&) = delete;

    // Imports `path` and uploads it; an unreadable file gives an empty mesh.
    static Mesh* loadMesh(const QString& path);

    // The caller has bound the program and set its uniforms.
    void draw();
    // draw() without the vertex array object, which belongs to the context
    // that made the mesh: another context sharing the buffer draws it with
    // its own functions.
    void drawBuffer(QOpenGLFunctions& gl);

    QOpenGLBuffer vertexBuffer;
    int32_t triangleCount = 0;
    QOpenGLVertexArrayObject vertexArray;
    int32_t islandCount = 1;
    // Per-triangle UV adjacency, filled by mesh processing; empty for now.
    std::vector<int32_t> triangleUvData;

private:
    void upload(const std::vector<MeshVertex>& vertices);
};
