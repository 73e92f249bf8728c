#include "MeshData.h"
#include "UvIslands.h"

#include <assimp/Exporter.hpp>
#include <assimp/Importer.hpp>
#include <assimp/scene.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>

namespace {

QString writeFile(const QTemporaryDir& dir, const QString& name, const QByteArray& text)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(text);
    return path;
}

MeshVertex at(float x, float y, float z)
{
    MeshVertex v{};
    v.vertex[0] = x, v.vertex[1] = y, v.vertex[2] = z;
    v.normal[1] = 1.0f;
    v.texCoord[0] = 0.25f;
    return v;
}

// Six faces of the cube [-1, 1]^3, each with UV corners of its own.
QByteArray cubeObj()
{
    QByteArray obj;
    const int corners[8][3] = {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1},
                               {-1, -1, 1},  {1, -1, 1},  {1, 1, 1},  {-1, 1, 1}};
    const int faces[6][4] = {{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {2, 3, 7, 6}, {0, 4, 7, 3}, {1, 2, 6, 5}};
    for (const auto& c : corners) {
        obj += QByteArray("v ") + QByteArray::number(c[0]) + " " + QByteArray::number(c[1]) + " " +
               QByteArray::number(c[2]) + "\n";
        obj += QByteArray("vn ") + QByteArray::number(c[0] / std::sqrt(3.0)) + " " +
               QByteArray::number(c[1] / std::sqrt(3.0)) + " " + QByteArray::number(c[2] / std::sqrt(3.0)) + "\n";
    }
    for (int f = 0; f < 6; ++f)
        for (int k = 0; k < 4; ++k)
            obj += QByteArray("vt ") + QByteArray::number(f + (k == 1 || k == 2 ? 0.9 : 0.1)) + " " +
                   QByteArray::number(k >= 2 ? 0.9 : 0.1) + "\n";
    for (int f = 0; f < 6; ++f) {
        obj += "f";
        for (int k = 0; k < 4; ++k) {
            const int corner = faces[f][k] + 1;
            const int uv = f * 4 + k + 1;
            obj += " " + QByteArray::number(corner) + "/" + QByteArray::number(uv) + "/" + QByteArray::number(corner);
        }
        obj += "\n";
    }
    return obj;
}

} // namespace

TEST(MeshImport, NormalisationCentresAndScalesByTheHalfDiagonal)
{
    std::vector<MeshVertex> vertices = {at(0, 0, 0), at(200, 100, 0), at(50, 25, 0)};
    normalizeToUnitSphere(vertices);
    const float s = 1.0f / std::sqrt(100.0f * 100.0f + 50.0f * 50.0f);
    EXPECT_NEAR(vertices[0].vertex[0], -100.0f * s, 1e-6f);
    EXPECT_NEAR(vertices[0].vertex[1], -50.0f * s, 1e-6f);
    EXPECT_NEAR(vertices[1].vertex[0], 100.0f * s, 1e-6f);
    EXPECT_NEAR(vertices[2].vertex[0], -50.0f * s, 1e-6f);
    EXPECT_NEAR(vertices[2].vertex[1], -25.0f * s, 1e-6f);
    EXPECT_FLOAT_EQ(vertices[2].vertex[2], 0.0f);
    // Only positions move.
    EXPECT_FLOAT_EQ(vertices[2].normal[1], 1.0f);
    EXPECT_FLOAT_EQ(vertices[2].texCoord[0], 0.25f);

    // A single point is centred without dividing by zero.
    std::vector<MeshVertex> point = {at(5, 5, 5)};
    normalizeToUnitSphere(point);
    EXPECT_FLOAT_EQ(point[0].vertex[0], 0.0f);
}

TEST(MeshImport, QuadsBecomeTrianglesAndMeshesMergeInSceneOrder)
{
    QTemporaryDir dir;
    // Object "Left" (a quad near x = -10) before object "Right" (a triangle near x = +10).
    const QString path = writeFile(dir, "two.obj",
                                   "o Left\n"
                                   "v -11 0 0\nv -9 0 0\nv -9 1 0\nv -11 1 0\n"
                                   "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                                   "f 1/1 2/2 3/3 4/4\n"
                                   "o Right\n"
                                   "v 9 0 0\nv 11 0 0\nv 10 1 0\n"
                                   "f 5/1 6/2 7/3\n");
    bool ok = false;
    const MeshData mesh = importMeshFile(path, &ok);
    ASSERT_TRUE(ok);
    ASSERT_EQ(mesh.triangleCount(), 3);
    for (int i = 0; i < 6; ++i)
        EXPECT_LT(mesh.vertices[i].vertex[0], -0.5f) << "vertex " << i << " should come from the first object";
    for (int i = 6; i < 9; ++i)
        EXPECT_GT(mesh.vertices[i].vertex[0], 0.5f) << "vertex " << i << " should come from the second object";
    // Fits the unit sphere: the half-diagonal is 1.
    float radius = 0.0f;
    for (const MeshVertex& v : mesh.vertices)
        radius = std::max(radius, std::hypot(v.vertex[0], v.vertex[1], v.vertex[2]));
    EXPECT_NEAR(radius, 1.0f, 1e-4f);
}

TEST(MeshImport, IslandsOfSeparateFacesAndOfAWeldedCube)
{
    QTemporaryDir dir;
    bool ok = false;
    const MeshData separate = importMeshFile(writeFile(dir, "separate.obj", cubeObj()), &ok);
    ASSERT_TRUE(ok);
    EXPECT_EQ(separate.triangleCount(), 12);
    EXPECT_EQ(separate.islandCount, 6);
    float highestLabel = 0.0f;
    for (const MeshVertex& v : separate.vertices)
        highestLabel = std::max(highestLabel, v.texCoord[2]);
    EXPECT_FLOAT_EQ(highestLabel, 5.0f);
    // The two triangles of a face carry one label.
    for (int f = 0; f < 6; ++f)
        for (int k = 1; k < 6; ++k)
            EXPECT_EQ(separate.vertices[f * 6].texCoord[2], separate.vertices[f * 6 + k].texCoord[2]);

    // Tangent smoothing splits a welded cube's corners in assimp, so the welded
    // cube's own index list is labelled directly: one island.
    const std::vector<uint32_t> weldedCube = {0, 3, 2, 0, 2, 1, 4, 5, 6, 4, 6, 7, 0, 1, 5, 0, 5, 4,
                                              2, 3, 7, 2, 7, 6, 0, 4, 7, 0, 7, 3, 1, 2, 6, 1, 6, 5};
    std::vector<int32_t> labels;
    EXPECT_EQ(labelUvIslands(weldedCube, 8, labels), 1);
    EXPECT_EQ(labels, std::vector<int32_t>(8, 0));
    // Two cubes in one index list, the second listed first: two islands
    // numbered by their lowest vertex.
    std::vector<uint32_t> twoCubes;
    for (uint32_t index : weldedCube)
        twoCubes.push_back(index + 8);
    twoCubes.insert(twoCubes.end(), weldedCube.begin(), weldedCube.end());
    EXPECT_EQ(labelUvIslands(twoCubes, 16, labels), 2);
    EXPECT_EQ(labels[0], 0);
    EXPECT_EQ(labels[15], 1);

    // A flat welded strip of three quads from a file stays one island.
    const MeshData strip = importMeshFile(writeFile(dir, "strip.obj",
                                                    "v 0 0 0\nv 1 0 0\nv 2 0 0\nv 3 0 0\n"
                                                    "v 0 1 0\nv 1 1 0\nv 2 1 0\nv 3 1 0\n"
                                                    "vt 0 0\nvt 0.3 0\nvt 0.6 0\nvt 0.9 0\n"
                                                    "vt 0 1\nvt 0.3 1\nvt 0.6 1\nvt 0.9 1\n"
                                                    "f 1/1 2/2 6/6 5/5\nf 2/2 3/3 7/7 6/6\nf 3/3 4/4 8/8 7/7\n"),
                                          &ok);
    ASSERT_TRUE(ok);
    EXPECT_EQ(strip.triangleCount(), 6);
    EXPECT_EQ(strip.islandCount, 1);
}

TEST(MeshImport, ExportedThreeDsFileImportsLikeItsSource)
{
    QTemporaryDir dir;
    const QString objPath = writeFile(dir, "cube.obj", cubeObj());
    Assimp::Importer importer;
    const aiScene* scene = importer.ReadFile(objPath.toStdString(), 0);
    ASSERT_NE(scene, nullptr);
    Assimp::Exporter exporter;
    const QString path = dir.filePath("cube.3ds");
    ASSERT_EQ(exporter.Export(scene, "3ds", path.toStdString()), AI_SUCCESS) << exporter.GetErrorString();

    bool ok = false;
    const MeshData mesh = importMeshFile(path, &ok);
    ASSERT_TRUE(ok);
    EXPECT_EQ(mesh.triangleCount(), 12);
    for (const MeshVertex& v : mesh.vertices)
        for (int k = 0; k < 3; ++k)
            EXPECT_NEAR(std::abs(v.vertex[k]), 1.0f / std::sqrt(3.0f), 1e-4f);
}

TEST(MeshImport, UnreadableFilesGiveAnEmptyMesh)
{
    QTemporaryDir dir;
    bool ok = true;
    EXPECT_EQ(importMeshFile(dir.filePath("missing.obj"), &ok).triangleCount(), 0);
    EXPECT_FALSE(ok);
    ok = true;
    const QString garbage = writeFile(dir, "garbage.fbx", QByteArray(300, '\x07'));
    EXPECT_EQ(importMeshFile(garbage, &ok).triangleCount(), 0);
    EXPECT_FALSE(ok);
}

TEST(MeshImport, BuiltInShapesHaveTheirTriangleCountsAndUnitNormals)
{
    EXPECT_EQ(makePlane().triangleCount(), 2);
    EXPECT_EQ(makeCube().triangleCount(), 12);
    EXPECT_EQ(makeSphere(32, 32).triangleCount(), 32 * 32 * 2);
    EXPECT_EQ(makeCylinder(32, 1).triangleCount(), 32 * 2 + 2 * 32);
    EXPECT_EQ(makeTriangle().triangleCount(), 1);
    for (const MeshData& mesh : {makeCube(), makeSphere(), makeCylinder()})
        for (const MeshVertex& v : mesh.vertices) {
            EXPECT_NEAR(std::hypot(v.normal[0], v.normal[1], v.normal[2]), 1.0f, 1e-4f);
            // The tangent frame is orthogonal to the normal.
            EXPECT_NEAR(v.normal[0] * v.tangent[0] + v.normal[1] * v.tangent[1] + v.normal[2] * v.tangent[2], 0.0f,
                        1e-4f);
        }
}
