#include "MeshData.h"

#include "UvIslands.h"

#include <assimp/cimport.h>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <QVector3D>

#include <algorithm>
#include <cmath>

namespace {

const float pi = 3.14159265358979f;

void set3(float* target, const QVector3D& v)
{
    target[0] = v.x();
    target[1] = v.y();
    target[2] = v.z();
}

MeshVertex makeVertex(const QVector3D& position, const QVector3D& normal, float u, float v, const QVector3D& tangent,
                      const QVector3D& binormal)
{
    MeshVertex vertex;
    set3(vertex.vertex, position);
    set3(vertex.normal, normal);
    vertex.texCoord[0] = u;
    vertex.texCoord[1] = v;
    vertex.texCoord[2] = 0.0f;
    set3(vertex.tangent, tangent);
    set3(vertex.binormal, binormal);
    return vertex;
}

// A flat square face as two triangles: corner = centre - a - b, UV u along
// a, v along b; normal, tangent and binormal constant.
void addQuad(std::vector<MeshVertex>& out, const QVector3D& centre, const QVector3D& a, const QVector3D& b,
             const QVector3D& normal)
{
    const QVector3D tangent = a.normalized();
    const QVector3D binormal = b.normalized();
    auto corner = [&](float u, float v) {
        return makeVertex(centre + a * (2.0f * u - 1.0f) + b * (2.0f * v - 1.0f), normal, u, v, tangent, binormal);
    };
    out.push_back(corner(0, 0));
    out.push_back(corner(1, 1));
    out.push_back(corner(1, 0));
    out.push_back(corner(0, 0));
    out.push_back(corner(0, 1));
    out.push_back(corner(1, 1));
}

} // namespace

MeshData makePlane()
{
    MeshData mesh;
    // Normal (0, 1, 0): tangent +x, binormal +z.
    addQuad(mesh.vertices, QVector3D(0, 0, 0), QVector3D(1, 0, 0), QVector3D(0, 0, 1), QVector3D(0, 1, 0));
    return mesh;
}

MeshData makeCube()
{
    MeshData mesh;
    const QVector3D x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
    // Each face seen from outside: u to the right, v up.
    addQuad(mesh.vertices, z, x, y, z);
    addQuad(mesh.vertices, -z, -x, y, -z);
    addQuad(mesh.vertices, x, -z, y, x);
    addQuad(mesh.vertices, -x, z, y, -x);
    addQuad(mesh.vertices, y, x, -z, y);
    addQuad(mesh.vertices, -y, x, z, -y);
    return mesh;
}

MeshData makeSphere(int segments, int rings)
{
    MeshData mesh;
    auto vertexAt = [&](int s, int r) {
        const float u = float(s) / segments, v = float(r) / rings;
        const float phi = u * 2.0f * pi, theta = v * pi; // theta from the south pole
        const QVector3D n(-std::sin(theta) * std::cos(phi), -std::cos(theta), std::sin(theta) * std::sin(phi));
        const QVector3D tangent(std::sin(phi), 0.0f, std::cos(phi));
        const QVector3D binormal(-std::cos(theta) * std::cos(phi), std::sin(theta), std::cos(theta) * std::sin(phi));
        return makeVertex(n, n, u, v, tangent, binormal);
    };
    for (int r = 0; r < rings; ++r)
        for (int s = 0; s < segments; ++s) {
            const MeshVertex a = vertexAt(s, r), b = vertexAt(s + 1, r), c = vertexAt(s + 1, r + 1),
                             d = vertexAt(s, r + 1);
            mesh.vertices.insert(mesh.vertices.end(), {a, b, c, a, c, d});
        }
    return mesh;
}

MeshData makeCylinder(int segments, int lengthSegments)
{
    MeshData mesh;
    auto sideVertex = [&](int s, int l) {
        const float u = float(s) / segments, v = float(l) / lengthSegments;
        const float phi = u * 2.0f * pi;
        const QVector3D n(std::cos(phi), 0.0f, -std::sin(phi));
        const QVector3D tangent(-std::sin(phi), 0.0f, -std::cos(phi));
        return makeVertex(QVector3D(n.x(), 2.0f * v - 1.0f, n.z()), n, u, v, tangent, QVector3D(0, 1, 0));
    };
    for (int l = 0; l < lengthSegments; ++l)
        for (int s = 0; s < segments; ++s) {
            const MeshVertex a = sideVertex(s, l), b = sideVertex(s + 1, l), c = sideVertex(s + 1, l + 1),
                             d = sideVertex(s, l + 1);
            mesh.vertices.insert(mesh.vertices.end(), {a, b, c, a, c, d});
        }
    // Caps as fans, UV from the disc position.
    for (float side : {1.0f, -1.0f}) {
        const QVector3D n(0, side, 0);
        auto capVertex = [&](float x, float z) {
            return makeVertex(QVector3D(x, side, z), n, 0.5f + 0.5f * x, 0.5f + 0.5f * z * side, QVector3D(1, 0, 0),
                              QVector3D(0, 0, side));
        };
        for (int s = 0; s < segments; ++s) {
            const float p0 = float(s) / segments * 2.0f * pi, p1 = float(s + 1) / segments * 2.0f * pi;
            const MeshVertex centre = capVertex(0, 0);
            const MeshVertex a = capVertex(std::cos(p0), -std::sin(p0)), b = capVertex(std::cos(p1), -std::sin(p1));
            if (side > 0)
                mesh.vertices.insert(mesh.vertices.end(), {centre, a, b});
            else
                mesh.vertices.insert(mesh.vertices.end(), {centre, b, a});
        }
    }
    return mesh;
}

MeshData makeTriangle()
{
    // Covers the whole viewport in clip space; the background pass draws it.
    MeshData mesh;
    const QVector3D n(0, 0, 1), t(1, 0, 0), b(0, 1, 0);
    mesh.vertices.push_back(makeVertex(QVector3D(-1, -1, 0), n, 0, 0, t, b));
    mesh.vertices.push_back(makeVertex(QVector3D(3, -1, 0), n, 2, 0, t, b));
    mesh.vertices.push_back(makeVertex(QVector3D(-1, 3, 0), n, 0, 2, t, b));
    return mesh;
}

void normalizeToUnitSphere(std::vector<MeshVertex>& vertices)
{
    if (vertices.empty())
        return;
    float low[3] = {1e10f, 1e10f, 1e10f}, high[3] = {-1e10f, -1e10f, -1e10f};
    for (const MeshVertex& v : vertices)
        for (int k = 0; k < 3; ++k) {
            low[k] = std::min(low[k], v.vertex[k]);
            high[k] = std::max(high[k], v.vertex[k]);
        }
    float centre[3];
    double radius2 = 0.0;
    for (int k = 0; k < 3; ++k) {
        centre[k] = (low[k] + high[k]) * 0.5f;
        radius2 += double(high[k] - centre[k]) * double(high[k] - centre[k]);
    }
    // A single point has no size: centre it and leave the scale alone.
    const float scale = radius2 > 0.0 ? float(1.0 / std::sqrt(radius2)) : 1.0f;
    for (MeshVertex& v : vertices)
        for (int k = 0; k < 3; ++k)
            v.vertex[k] = (v.vertex[k] - centre[k]) * scale;
}

MeshData importMeshFile(const QString& path, bool* ok)
{
    MeshData mesh;
    if (ok)
        *ok = false;
    aiPropertyStore* properties = aiCreatePropertyStore();
    aiSetImportPropertyFloat(properties, AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, 80.0f);
    // aiProcessPreset_TargetRealtime_MaxQuality; node transforms are not applied.
    const unsigned int flags = 0x379ECB;
    static_assert(aiProcessPreset_TargetRealtime_MaxQuality == 0x379ECB, "assimp's preset changed");
    const aiScene* scene = aiImportFileExWithProperties(path.toUtf8().constData(), flags, nullptr, properties);
    aiReleasePropertyStore(properties);
    if (!scene)
        return mesh;

    for (unsigned int m = 0; m < scene->mNumMeshes; ++m) {
        const aiMesh* source = scene->mMeshes[m];
        std::vector<uint32_t> indices;
        indices.reserve(size_t(source->mNumFaces) * 3);
        for (unsigned int f = 0; f < source->mNumFaces; ++f) {
            const aiFace& face = source->mFaces[f];
            // SortByPType leaves points and lines in meshes of their own.
            if (face.mNumIndices != 3)
                continue;
            indices.insert(indices.end(), face.mIndices, face.mIndices + 3);
        }
        std::vector<int32_t> labels;
        mesh.islandCount = labelUvIslands(indices, source->mNumVertices, labels);

        const aiVector3D zero(0, 0, 0);
        for (uint32_t index : indices) {
            if (index >= source->mNumVertices)
                continue;
            MeshVertex v;
            const aiVector3D& p = source->mVertices[index];
            const aiVector3D& n = source->mNormals ? source->mNormals[index] : zero;
            const aiVector3D& uv = source->mTextureCoords[0] ? source->mTextureCoords[0][index] : zero;
            const aiVector3D& t = source->mTangents ? source->mTangents[index] : zero;
            const aiVector3D& b = source->mBitangents ? source->mBitangents[index] : zero;
            v.vertex[0] = p.x, v.vertex[1] = p.y, v.vertex[2] = p.z;
            v.normal[0] = n.x, v.normal[1] = n.y, v.normal[2] = n.z;
            v.texCoord[0] = uv.x, v.texCoord[1] = uv.y, v.texCoord[2] = float(labels[index]);
            v.tangent[0] = t.x, v.tangent[1] = t.y, v.tangent[2] = t.z;
            v.binormal[0] = b.x, v.binormal[1] = b.y, v.binormal[2] = b.z;
            mesh.vertices.push_back(v);
        }
    }
    normalizeToUnitSphere(mesh.vertices);
    aiReleaseImport(scene);
    if (ok)
        *ok = true;
    return mesh;
}
