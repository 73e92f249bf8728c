#include "Mesh.h"

namespace {

MeshData shapeData(Mesh::Shape shape)
{
    switch (shape) {
    case Mesh::Plane: return makePlane();
    case Mesh::Cube: return makeCube();
    case Mesh::Sphere: return makeSphere(32, 32);
    case Mesh::Cylinder: return makeCylinder(32, 1);
    case Mesh::Triangle: return makeTriangle();
    }
    return MeshData();
}

} // namespace

Mesh::Mesh(Shape shape)
    : vertexBuffer(QOpenGLBuffer::VertexBuffer)
{
    initializeOpenGLFunctions();
    vertexArray.create();
    upload(shapeData(shape).vertices);
}

Mesh::Mesh(const MeshData& data)
    : vertexBuffer(QOpenGLBuffer::VertexBuffer)
{
    initializeOpenGLFunctions();
    vertexArray.create();
    islandCount = data.islandCount;
    upload(data.vertices);
}

Mesh* Mesh::loadMesh(const QString& path)
{
    return new Mesh(importMeshFile(path));
}

void Mesh::upload(const std::vector<MeshVertex>& vertices)
{
    vertexBuffer.create();
    vertexBuffer.bind();
    triangleCount = int32_t(vertices.size() / 3);
    vertexBuffer.allocate(vertices.data(), int(sizeof(MeshVertex)) * 3 * triangleCount);
    vertexBuffer.release();
}

void Mesh::draw()
{
    QOpenGLVertexArrayObject::Binder binder(&vertexArray);
    drawBuffer(*this);
}

void Mesh::drawBuffer(QOpenGLFunctions& gl)
{
    if (triangleCount <= 0 || !vertexBuffer.isCreated() || !vertexBuffer.bind())
        return;
    const int stride = int(sizeof(MeshVertex));
    const size_t offsets[5] = {offsetof(MeshVertex, vertex), offsetof(MeshVertex, normal),
                               offsetof(MeshVertex, texCoord), offsetof(MeshVertex, tangent),
                               offsetof(MeshVertex, binormal)};
    for (GLuint location = 0; location < 5; ++location) {
        gl.glEnableVertexAttribArray(location);
        gl.glVertexAttribPointer(location, 3, GL_FLOAT, GL_FALSE, stride, reinterpret_cast<const void*>(offsets[location]));
    }
    gl.glDrawArrays(GL_TRIANGLES, 0, 3 * triangleCount);
    for (GLuint location = 0; location < 5; ++location)
        gl.glDisableVertexAttribArray(location);
    vertexBuffer.release();
}
