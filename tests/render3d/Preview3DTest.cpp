#include "../ErrorCapture.h"
#include "MessageHandler.h"
#include "Preview3D.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QSurfaceFormat>
#include <QMouseEvent>
#include <QTest>
#include <QWheelEvent>
#include <QVector3D>

#include <cmath>

namespace {

const QVector3D environmentColour(0.3f, 0.35f, 0.4f);
const QVector3D surfaceColour(0.6f, 0.4f, 0.3f);
const float roughnessValue = 0.6f, metalnessValue = 0.3f, lightStrength = 0.8f;

QVector3D pow3(const QVector3D& v, float e)
{
    return QVector3D(std::pow(v.x(), e), std::pow(v.y(), e), std::pow(v.z(), e));
}

QVector3D schlick(const QVector3D& F0, float cosine)
{
    return F0 + (QVector3D(1, 1, 1) - F0) * std::pow(1.0f - cosine, 5.0f);
}

// The shading of a flat surface facing the camera (N = (0, 0, 1) in view and
// world space) under a constant environment, evaluated for the view vector V.
QVector3D expectedShading(const QVector3D& V, bool withLight)
{
    const QVector3D N(0, 0, 1);
    const QVector3D kd = surfaceColour;
    const float roughness = std::pow(roughnessValue, 2.2f), metalness = std::pow(metalnessValue, 2.2f);
    const QVector3D F0 = QVector3D(0.04f, 0.04f, 0.04f) * (1.0f - metalness) + kd * metalness;
    const float oneMinusReflectivity = 0.96f - metalness * 0.96f;
    const QVector3D environment = pow3(environmentColour, 0.45f);
    QVector3D colour = environment * kd * oneMinusReflectivity +
                       environment * schlick(F0, std::abs(QVector3D::dotProduct(N, V)));
    if (withLight) {
        const QVector3D L = QVector3D(0, 0.5f, 1).normalized();
        const float r = std::max(roughness, 0.01f);
        const QVector3D H = (L + V).normalized();
        const float NdotL = std::max(QVector3D::dotProduct(N, L), 0.0f);
        const float NdotH = std::max(QVector3D::dotProduct(N, H), 0.0f);
        const float LdotH = std::max(QVector3D::dotProduct(L, H), 0.0f);
        const float NdotV = std::max(QVector3D::dotProduct(N, V), 0.0f);
        const float f = (NdotH * r * r - NdotH) * NdotH + 1.0f;
        const float D = r * r / (3.14159265359f * f * f + 1e-5f);
        const float Vis = 0.5f / (NdotL * (NdotV * (1 - r) + r) + NdotV * (NdotL * (1 - r) + r) + 1e-4f);
        colour += (kd * oneMinusReflectivity + schlick(F0, LdotH) * Vis * D) * lightStrength * NdotL;
    }
    return colour;
}

class Preview3DTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        colour = Image(4, 4, RGB);
        for (uint64_t i = 0; i < colour.pixelCount(); ++i) {
            colour.data[i * 3] = surfaceColour.x();
            colour.data[i * 3 + 1] = surfaceColour.y();
            colour.data[i * 3 + 2] = surfaceColour.z();
        }
        preview.resize(240, 200);
        preview.setEnvironment(
            plainEnvironment(environmentColour.x(), environmentColour.y(), environmentColour.z()));
        preview.setLayers({&colour, nullptr, nullptr, nullptr, nullptr, nullptr});
        // The plane turned to face the camera, which looks down -z from (0, 0, 3).
        QMatrix4x4 facing;
        facing.rotate(90.0f, 1, 0, 0);
        preview.setModelTransform(facing);
        preview.camera().yaw = 0.0f;
        preview.camera().pitch = 0.0f;
        preview.camera().distance = 3.0f;
        preview.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&preview));
    }

    PreviewSettings planeSettings(int lightingMode) const
    {
        PreviewSettings settings;
        settings.mesh = PreviewSettings::PlaneMesh;
        settings.lightingMode = lightingMode;
        settings.ambientMode = 2;
        settings.ambientStrength = 1.0f;
        settings.environmentStrength = 1.0f;
        settings.lightStrength = lightStrength;
        settings.constRoughness = roughnessValue;
        settings.constMetalness = metalnessValue;
        return settings;
    }

    // Compares a grid of pixels in the middle, where the plane is, with the
    // CPU shading for each pixel's view vector.
    void expectMatchesCpu(const QImage& frame, bool withLight)
    {
        const float tanHalf = std::tan(preview.camera().fieldOfView * 0.5f * 3.14159265f / 180.0f);
        const float aspect = float(frame.width()) / frame.height();
        int checked = 0;
        for (int gy = -4; gy <= 4; ++gy)
            for (int gx = -4; gx <= 4; ++gx) {
                const int px = frame.width() / 2 + gx * frame.width() / 14;
                const int py = frame.height() / 2 + gy * frame.height() / 14;
                const float ndcX = (px + 0.5f) / frame.width() * 2.0f - 1.0f;
                const float ndcY = 1.0f - (py + 0.5f) / frame.height() * 2.0f;
                const QVector3D V = -QVector3D(ndcX * tanHalf * aspect, ndcY * tanHalf, -1.0f).normalized();
                const QVector3D expected = expectedShading(V, withLight);
                const QRgb pixel = frame.pixel(px, py);
                const float got[3] = {qRed(pixel) / 255.0f, qGreen(pixel) / 255.0f, qBlue(pixel) / 255.0f};
                for (int c = 0; c < 3; ++c)
                    EXPECT_NEAR(got[c], std::clamp(expected[c], 0.0f, 1.0f), 2.0f / 255.0f)
                        << "pixel " << px << "," << py << " channel " << c;
                ++checked;
            }
        EXPECT_EQ(checked, 81);
    }

    Preview3D preview;
    Image colour;
    ErrorCapture errorLog;
};

int differingPixels(const QImage& a, const QImage& b)
{
    int count = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            if (std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q)) > 6)
                ++count;
        }
    return count;
}

} // namespace

TEST_F(Preview3DTest, EveryProgramCompilesAndLinks)
{
    preview.grabFramebuffer();
    EXPECT_TRUE(preview.programsLinked());
    EXPECT_TRUE(errorLog.empty()) << errorLog.text();
}

TEST_F(Preview3DTest, HeadlampOnAFacingPlaneMatchesTheFormula)
{
    preview.setSettings(planeSettings(Headlamp));
    expectMatchesCpu(preview.grabFramebuffer(), true);
    EXPECT_TRUE(errorLog.empty()) << errorLog.text();
}

TEST_F(Preview3DTest, EnvironmentOnlyShowsOnlyTheEnvironmentTerm)
{
    PreviewSettings settings = planeSettings(EnvironmentOnly);
    preview.setSettings(settings);
    const QImage frame = preview.grabFramebuffer();
    expectMatchesCpu(frame, false);
    // No light reaches it, however strong.
    settings.lightStrength = 10.0f;
    preview.setSettings(settings);
    EXPECT_EQ(differingPixels(frame, preview.grabFramebuffer()), 0);
}

TEST_F(Preview3DTest, EachLightingPresetGivesADifferentPicture)
{
    preview.setModelTransform(QMatrix4x4());
    std::vector<QImage> frames;
    for (int mode = 0; mode < LightingModeCount; ++mode) {
        PreviewSettings settings = planeSettings(mode);
        settings.mesh = PreviewSettings::SphereMesh;
        settings.constRoughness = 0.4f;
        preview.setSettings(settings);
        frames.push_back(preview.grabFramebuffer());
    }
    for (int a = 0; a < LightingModeCount; ++a)
        for (int b = a + 1; b < LightingModeCount; ++b)
            EXPECT_GT(differingPixels(frames[a], frames[b]), 200) << "modes " << a << " and " << b;
}

TEST_F(Preview3DTest, MeshChoicesDrawTheirShapesAndUnknownOnesNothing)
{
    PreviewSettings settings = planeSettings(NoLighting);
    settings.environmentAsBackground = false;
    settings.backgroundColor = QVector3D(0, 0, 0);
    settings.mesh = 42;
    preview.setSettings(settings);
    const QImage empty = preview.grabFramebuffer();
    EXPECT_EQ(empty.pixel(empty.width() / 2, empty.height() / 2) & 0xFFFFFF, 0u);
    for (int choice : {PreviewSettings::CubeMesh, PreviewSettings::SphereMesh, PreviewSettings::PlaneMesh,
                       PreviewSettings::CylinderMesh}) {
        settings.mesh = choice;
        preview.setSettings(settings);
        const QImage frame = preview.grabFramebuffer();
        // "No lighting" shows the colour layer as it is.
        const QRgb centre = frame.pixel(frame.width() / 2, frame.height() / 2);
        EXPECT_NEAR(qRed(centre), 0.6 * 255, 1.5) << choice;
        EXPECT_NEAR(qBlue(centre), 0.3 * 255, 1.5) << choice;
    }
}

TEST_F(Preview3DTest, ModelChangedAnnouncesTheDrawnMesh)
{
    std::vector<Mesh*> announced;
    QObject::connect(&preview, &Preview3D::ModelChanged, [&](Mesh* mesh) { announced.push_back(mesh); });
    // An unknown choice draws nothing: null.
    PreviewSettings settings = planeSettings(NoLighting);
    settings.mesh = 42;
    preview.setSettings(settings);
    preview.grabFramebuffer();
    ASSERT_EQ(announced.size(), 1u);
    EXPECT_EQ(announced.back(), nullptr);

    settings.mesh = PreviewSettings::SphereMesh;
    preview.setSettings(settings);
    preview.grabFramebuffer();
    ASSERT_EQ(announced.size(), 2u);
    ASSERT_NE(announced.back(), nullptr);
    EXPECT_GT(announced.back()->triangleCount, 1000);

    // Only a change is announced.
    preview.grabFramebuffer();
    EXPECT_EQ(announced.size(), 2u);
    settings.mesh = PreviewSettings::PlaneMesh;
    preview.setSettings(settings);
    preview.grabFramebuffer();
    ASSERT_EQ(announced.size(), 3u);
    ASSERT_NE(announced.back(), nullptr);
    EXPECT_EQ(announced.back()->triangleCount, 2);
}

TEST_F(Preview3DTest, MouseOrbitsPansAndZoomsAndResetRestores)
{
    preview.resetCamera();
    const OrbitCamera start = preview.camera();
    const QImage before = preview.grabFramebuffer();

    QTest::mousePress(&preview, Qt::LeftButton, Qt::NoModifier, QPoint(100, 100));
    QMouseEvent drag(QEvent::MouseMove, QPointF(150, 80), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&preview, &drag);
    QTest::mouseRelease(&preview, Qt::LeftButton, Qt::NoModifier, QPoint(150, 80));
    EXPECT_NE(preview.camera().yaw, start.yaw);
    EXPECT_NE(preview.camera().pitch, start.pitch);
    EXPECT_GT(differingPixels(before, preview.grabFramebuffer()), 100);

    QTest::mousePress(&preview, Qt::MiddleButton, Qt::NoModifier, QPoint(100, 100));
    QMouseEvent pan(QEvent::MouseMove, QPointF(130, 100), Qt::MiddleButton, Qt::MiddleButton, Qt::NoModifier);
    QApplication::sendEvent(&preview, &pan);
    EXPECT_GT((preview.camera().target - start.target).length(), 0.01f);

    QWheelEvent wheel(QPointF(100, 100), preview.mapToGlobal(QPoint(100, 100)), QPoint(), QPoint(0, 240),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&preview, &wheel);
    EXPECT_LT(preview.camera().distance, start.distance);

    preview.resetCamera();
    EXPECT_EQ(preview.camera().position(), start.position());
    EXPECT_EQ(differingPixels(before, preview.grabFramebuffer()), 0);
}

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    // Listing the tests (CTest's discovery) must work without a display.
    if (::testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    QCoreApplication::setAttribute(Qt::AA_UseDesktopOpenGL, true);
    QSurfaceFormat format;
    format.setVersion(2, 1);
    format.setSwapInterval(0);
    QSurfaceFormat::setDefaultFormat(format);
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
