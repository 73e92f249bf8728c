#include "EnvironmentScenes.h"
#include "MeshData.h"
#include "SampleMeshes.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <algorithm>
#include <cmath>

TEST(PreviewData, SampleMeshesImportWithThousandsOfTrianglesAndUnitNormals)
{
    QTemporaryDir dir;
    for (const auto& [name, writer] : {std::make_pair("Bridge.obj", makeBridge()), std::make_pair("Tree.obj", makeTree())}) {
        const QString path = dir.filePath(name);
        ASSERT_TRUE(writer.write(path));
        bool ok = false;
        const MeshData mesh = importMeshFile(path, &ok);
        ASSERT_TRUE(ok) << name;
        // Nothing is lost on the way through assimp (no degenerate faces).
        EXPECT_EQ(mesh.triangleCount(), writer.triangleCount()) << name;
        EXPECT_GE(mesh.triangleCount(), 2000) << name;
        EXPECT_LE(mesh.triangleCount(), 10000) << name;
        // Several UV islands: the leaves and the bridge's parts are cut apart.
        EXPECT_GT(mesh.islandCount, 1) << name;
        for (const MeshVertex& v : mesh.vertices)
            ASSERT_NEAR(std::hypot(v.normal[0], v.normal[1], v.normal[2]), 1.0f, 1e-3f) << name;
    }
}

TEST(PreviewData, EnvironmentLevelsHalveAndBlur)
{
    for (const QString& name : environmentSceneNames()) {
        const EnvironmentLevel sharp = renderEnvironmentScene(name, 256, 128);
        const EnvironmentMap set = blurredLevels(sharp);
        float previousPeak = 1e30f;
        for (int k = 0; k < environmentLevelCount; ++k) {
            const EnvironmentLevel& level = set.levels[k];
            EXPECT_EQ(level.width, 256u >> k) << qPrintable(name);
            EXPECT_EQ(level.height, 128u >> k) << qPrintable(name);
            const float peak = *std::max_element(level.rgb.begin(), level.rgb.end());
            const float low = *std::min_element(level.rgb.begin(), level.rgb.end());
            EXPECT_GE(low, 0.0f) << qPrintable(name);
            // Bright lights spread out level by level.
            EXPECT_LT(peak, previousPeak) << qPrintable(name) << " level " << k;
            previousPeak = peak;
        }
    }
}
