#include "Image.h"
#include "MeshData.h"
#include "MessageHandler.h"
#include "UvSeamFixer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

const float background = 5.0f;

// The side of the built-in cylinder with its UVs pulled in to 0.1 .. 0.9,
// leaving room around the island: one UV seam, where u = 0.1 meets u = 0.9.
std::vector<MeshVertex> cylinderSide()
{
    std::vector<MeshVertex> vertices = makeCylinder(32, 1).vertices;
    vertices.resize(32 * 6);
    for (MeshVertex& v : vertices) {
        v.texCoord[0] = 0.1f + 0.8f * v.texCoord[0];
        v.texCoord[1] = 0.1f + 0.8f * v.texCoord[1];
    }
    return vertices;
}

// A generated-looking layer: different values on the two sides of the seam,
// `background` outside the island.
Image patternLayer(uint32_t size, PixelFormat format)
{
    Image image(size, size, format);
    const uint32_t channels = image.channels();
    for (uint32_t y = 0; y < size; ++y)
        for (uint32_t x = 0; x < size; ++x) {
            float* p = image.data + channels * (uint64_t(y) * size + x);
            const float u = (x + 0.5f) / size, v = (y + 0.5f) / size;
            const bool inside = u > 0.1f && u < 0.9f && v > 0.1f && v < 0.9f;
            for (uint32_t c = 0; c < channels; ++c)
                p[c] = inside ? 0.5f + 0.4f * std::sin(9.0f * u + 5.0f * v + 2.0f * c) : background;
            if (format == Normal) {
                p[0] = inside ? 0.6f * std::sin(9.0f * u + 5.0f * v) : 0.0f;
                p[1] = inside ? 0.6f * std::cos(7.0f * v) : 0.0f;
                p[2] = std::sqrt(1.0f - p[0] * p[0] - p[1] * p[1]);
            }
        }
    return image;
}

float at(const Image& image, uint32_t x, uint32_t y, uint32_t c = 0)
{
    return image.data[image.channels() * (uint64_t(y) * image.width + x) + c];
}

// A bilinear read as the GPU filters at texel-unit position (x, y).
float filtered(const Image& image, float x, float y, uint32_t c)
{
    const float fx = x - 0.5f, fy = y - 0.5f;
    const uint32_t x0 = uint32_t(fx), y0 = uint32_t(fy);
    const float ax = fx - x0, ay = fy - y0;
    return (at(image, x0, y0, c) * (1 - ax) + at(image, x0 + 1, y0, c) * ax) * (1 - ay) +
           (at(image, x0, y0 + 1, c) * (1 - ax) + at(image, x0 + 1, y0 + 1, c) * ax) * ay;
}

struct LogCapture
{
    LogCapture()
    {
        connection = QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage,
                                      [this](const QString& text, int severity) {
                                          lines << QString::number(severity) + " " + text;
                                      });
    }
    ~LogCapture() { QObject::disconnect(connection); }
    QStringList lines;
    QMetaObject::Connection connection;
};

TEST(UvSeamFixer, FindsTheOneSeamOfACylinder)
{
    const UvSeamSet set = findUvSeams(cylinderSide());
    EXPECT_EQ(set.islandCount, 1);
    ASSERT_EQ(set.seams.size(), 1u);
    const UvSeam& seam = set.seams[0];
    // The two UV edges run along the same model points: u differs, v agrees.
    EXPECT_NEAR(std::abs(seam.a0[0] - seam.b0[0]), 0.8f, 1e-5f);
    EXPECT_FLOAT_EQ(seam.a0[1], seam.b0[1]);
    EXPECT_FLOAT_EQ(seam.a1[1], seam.b1[1]);

    // The whole cylinder: the caps meet the side along both rims, and each
    // cap is an island of its own.
    const UvSeamSet whole = findUvSeams(makeCylinder(32, 1).vertices);
    EXPECT_EQ(whole.islandCount, 3);
    EXPECT_EQ(whole.seams.size(), 1u + 2u * 32u);
}

TEST(UvSeamFixer, SeamEdgesAgreeInteriorStaysAndIslandsArePadded)
{
    const uint32_t size = 128;
    Image colour = patternLayer(size, RGB), normal = patternLayer(size, Normal), gray = patternLayer(size, Gray);
    const Image before = colour;
    // The seam edges lie at x = 12.8 and x = 115.2; the island covers texel
    // rows and columns 13 .. 114.
    float largestBefore = 0.0f;
    for (uint32_t y = 20; y < 108; ++y)
        largestBefore = std::max(largestBefore, std::abs(at(before, 13, y) - at(before, 114, y)));
    ASSERT_GT(largestBefore, 0.2f);

    LogCapture log;
    ASSERT_TRUE(fixUvSeams(cylinderSide(), {&colour, &normal, &gray}));
    EXPECT_TRUE(log.lines.contains("3 UV seams fixed!")) << log.lines.join("\n").toStdString();

    for (uint32_t y = 14; y < 114; ++y) {
        for (uint32_t c = 0; c < 3; ++c) {
            // What filtering reads on the edge, and the texels either side.
            EXPECT_NEAR(filtered(colour, 12.8f, y + 0.5f, c), filtered(colour, 115.2f, y + 0.5f, c), 1e-4f) << y;
            EXPECT_NEAR(at(colour, 13, y, c), at(colour, 114, y, c), 1e-4f) << y;
            EXPECT_NEAR(at(colour, 12, y, c), at(colour, 115, y, c), 1e-4f) << y;
            EXPECT_NEAR(at(normal, 13, y, c), at(normal, 114, y, c), 1e-4f) << y;
        }
        // The fade moves texels a little way in, not the middle.
        for (uint32_t x = 20; x < 108; ++x)
            for (uint32_t c = 0; c < 3; ++c)
                ASSERT_EQ(at(colour, x, y, c), at(before, x, y, c)) << x << "," << y;
        // Padding: eight texels of island colour beside the edge, then the
        // background as it was.
        for (uint32_t x = 5; x <= 11; ++x)
            EXPECT_LT(at(colour, x, y), 1.0f) << x << "," << y;
        EXPECT_EQ(at(colour, 2, y), background);
        EXPECT_EQ(at(colour, 125, y), background);
    }
    for (uint32_t y = 115; y <= 121; ++y)
        EXPECT_LT(at(colour, 64, y), 1.0f) << y;
    EXPECT_EQ(at(colour, 64, 126), background);

    // All layers alike: the gray layer holds what channel 0 of the colour got.
    for (uint64_t i = 0; i < gray.pixelCount(); ++i)
        ASSERT_EQ(gray.data[i], colour.data[3 * i]) << i;
    // Normals stay unit vectors everywhere.
    for (uint64_t i = 0; i < normal.pixelCount(); ++i) {
        const float* n = normal.data + 3 * i;
        ASSERT_NEAR(n[0] * n[0] + n[1] * n[1] + n[2] * n[2], 1.0f, 1e-4f) << i;
    }
}

TEST(UvSeamFixer, SphereSeamAgreesAndPolesDoNotBreakIt)
{
    Image layer(64, 64, RGB);
    for (uint64_t i = 0; i < layer.floatCount(); ++i)
        layer.data[i] = float((i * 7919) % 101) / 100.0f;
    ASSERT_TRUE(fixUvSeams(makeSphere(16, 8).vertices, {&layer}));
    for (uint32_t y = 12; y < 52; ++y)
        for (uint32_t c = 0; c < 3; ++c)
            EXPECT_NEAR(at(layer, 0, y, c), at(layer, 63, y, c), 1e-4f) << y;
    for (uint64_t i = 0; i < layer.floatCount(); ++i)
        ASSERT_TRUE(std::isfinite(layer.data[i]));
}

TEST(UvSeamFixer, BadInputIsRefusedOrHarmless)
{
    Image layer = patternLayer(32, RGB);
    const Image before = layer;
    Image empty;
    {
        LogCapture log;
        EXPECT_FALSE(fixUvSeams({}, {&layer}));
        EXPECT_FALSE(fixUvSeams(cylinderSide(), {}));
        EXPECT_FALSE(fixUvSeams(cylinderSide(), {nullptr, &empty}));
        EXPECT_EQ(log.lines.size(), 3);
        for (const QString& line : log.lines)
            EXPECT_TRUE(line.startsWith("1 ")) << line.toStdString();
    }
    for (uint64_t i = 0; i < layer.floatCount(); ++i)
        ASSERT_EQ(layer.data[i], before.data[i]);

    // Coordinates that are not numbers or absurdly far out do nothing and
    // take no time; the rest of the mesh is still fixed.
    std::vector<MeshVertex> vertices = cylinderSide();
    MeshVertex wild = vertices[0];
    wild.texCoord[0] = std::numeric_limits<float>::quiet_NaN();
    vertices.insert(vertices.end(), {wild, vertices[1], vertices[2]});
    MeshVertex far = vertices[3];
    far.texCoord[0] = 1e30f;
    far.vertex[0] += 0.5f;
    vertices.insert(vertices.end(), {far, vertices[4], vertices[5]});
    EXPECT_TRUE(fixUvSeams(vertices, {&layer, &empty}));
    EXPECT_NEAR(at(layer, 3, 16), at(layer, 28, 16), 1e-4f);
}

} // namespace
