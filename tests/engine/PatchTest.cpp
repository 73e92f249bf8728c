#include "BlendedPatch.h"
#include "CutoutPatch.h"
#include "EngineTestImages.h"
#include "PatchSource.h"

#include <gtest/gtest.h>

#include <random>

using namespace Velmor;

namespace {

// The error rule written per pixel over PatchSource::sourcePixels.
float referenceDifference(const LayeredPixel& a, const LayeredPixel& b, bool firstOnly)
{
    float sum = 0.0f;
    for (size_t l = 0; l < (firstOnly ? 1 : a.size()); ++l) {
        const Pixel &p = a[l], &q = b[l];
        if (p.format == Gray)
            sum += std::fabs(p[0] - q[0]);
        else if (p.format == Normal)
            sum += float(1.0 - (double(p[0]) * q[0] + double(p[1]) * q[1] + double(p[2]) * q[2]));
        else
            for (uint32_t c = 0; c < p.channels(); ++c)
                sum += (p[c] - q[c]) * (p[c] - q[c]);
    }
    return sum;
}

std::unique_ptr<LayeredImage> makeTarget(int w, int h, const LayeredImage& like)
{
    auto target = std::make_unique<LayeredImage>();
    for (size_t l = 0; l < like.layerCount(); ++l)
        target->setLayer(like.names[l], new Image(w, h, like.layers[l]->format));
    return target;
}

// Fills every target pixel with content unrelated to the source.
void scribble(LayeredImage& target, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> value(0.0f, 1.0f);
    for (Image* layer : target.layers)
        for (float* n = layer->data; n < layer->data + layer->floatCount(); n += layer->channels()) {
            for (uint32_t c = 0; c < layer->channels(); ++c)
                n[c] = value(random);
            const float len = layer->format == Normal ? std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]) : 1.0f;
            for (uint32_t c = 0; c < layer->channels(); ++c)
                n[c] /= len;
        }
}

} // namespace

// The raw loops must give what sampling through PatchSource gives, for
// whole-pixel and for rotated and scaled candidates, near and across the
// source's and the target's edges.
TEST(Patch, RecordedErrorsMatchPerPixelReference)
{
    auto source = EngineTest::makeSource(40, 36);
    source->layers[2]->wrapMode = Clamp;
    auto target = makeTarget(50, 44, *source);
    scribble(*target, 5);
    std::mt19937 random(9);
    std::vector<uint8_t> filled(50 * 44);
    for (auto& f : filled)
        f = random() % 3 != 0;

    CutoutPatch patch;
    patch.init(target.get(), 12, 5);
    const int F = patch.fullSize();
    const struct { int x, y, sx, sy; float dirX, dirY, scale; bool all; } cases[] = {
        {-11, -11, 3, 4, 0, 1, 1, true}, {30, 25, 30, 20, 0, 1, 1, true}, {7, 40, -5, 33, 0, 1, 1, false},
        {12, 10, 4, 6, 0, 1, 1, true}, // no fold in source or target columns
        {20, 5, 10, 8, 0.6f, 0.8f, 1, true}, {-3, 30, 25, 28, -1, 0, 2.5f, true},
        {44, -6, 38, 1, 0.28f, -0.96f, 0.7f, true}};
    for (const auto& c : cases) {
        patch.x = c.x, patch.y = c.y;
        PatchSource candidate(source.get(), c.sx, c.sy, F / 2, c.dirX, c.dirY, c.scale);
        patch.bestError = -1.0f; // keep the maps where they are
        const float error = patch.evaluate(candidate, filled.data(), c.all);
        double sum = 0.0;
        int count = 0;
        for (int dy = 0; dy < F; ++dy)
            for (int dx = 0; dx < F; ++dx) {
                const bool core = dx >= 5 && dx < 17 && dy >= 5 && dy < 17;
                const int tx = (c.x + dx + 50) % 50, ty = (c.y + dy + 44) % 44;
                float expected = 0.0f;
                if (!core && filled[ty * 50 + tx]) {
                    PatchSource probe = candidate;
                    expected = referenceDifference(probe.sourcePixels(dx, dy), target->pixelAt(tx, ty), !c.all);
                    sum += expected;
                    ++count;
                }
                ASSERT_NEAR(patch.errorMap->data[dy * F + dx], expected, 1e-6f * (1.0f + std::fabs(expected)))
                    << dx << "," << dy << " case " << c.sx << "," << c.sy;
            }
        ASSERT_GT(count, 0);
        EXPECT_NEAR(error, sum / count, 1e-4 * (1.0 + sum / count));
    }
}

TEST(Patch, BlendedPasteKeepsCoreExactAndFadesTheRing)
{
    auto source = EngineTest::makeSource(32, 32);
    auto target = makeTarget(40, 40, *source);
    std::vector<uint8_t> filled(40 * 40, 0);
    BlendedPatch patch;
    patch.init(target.get(), 10, 4);
    patch.x = 6, patch.y = 8;
    PatchSource candidate(source.get(), 5, 7, 9, 0.0f, 1.0f, 1.0f);

    // Nothing filled: error 0, the candidate becomes the best one.
    EXPECT_EQ(patch.evaluate(candidate, filled.data(), true), 0.0f);
    ASSERT_NE(patch.bestSource, nullptr);
    patch.paste(filled.data(), nullptr);
    EXPECT_EQ(patch.bestSource, nullptr);
    for (int dy = 0; dy < 18; ++dy)
        for (int dx = 0; dx < 18; ++dx) {
            // The core is marked filled and copied exactly; unfilled ring pixels are left alone.
            const bool core = dx >= 4 && dx <= 14 && dy >= 4 && dy <= 14;
            EXPECT_EQ(filled[(8 + dy) * 40 + 6 + dx], core ? 1 : 0) << dx << "," << dy;
            EXPECT_EQ(target->layers[0]->pixelAt(6 + dx, 8 + dy)[1],
                      core ? source->layers[0]->pixelAt(5 + dx, 7 + dy)[1] : 0.0f);
        }

    // Over filled content: the outer ring edge (d = 1) keeps the old value,
    // the inner ring blends, and the candidate's error is now positive.
    scribble(*target, 2);
    std::fill(filled.begin(), filled.end(), 1);
    const Image before(*target->layers[2]);
    EXPECT_GT(patch.evaluate(candidate, filled.data(), true), 0.0f);
    patch.paste(filled.data(), nullptr);
    const Image& grey = *target->layers[2];
    EXPECT_EQ(grey.pixelAt(6 + 0, 8 + 9)[0], before.pixelAt(6, 17)[0]);      // left edge, d = 1
    EXPECT_EQ(grey.pixelAt(6 + 0, 8 + 0)[0], before.pixelAt(6, 8)[0]);       // beyond the rounded corner
    const float s = source->layers[2]->pixelAt(5 + 2, 7 + 9)[0];             // dx 2: d = 0.5
    EXPECT_NEAR(grey.pixelAt(8, 17)[0], 0.5f * before.pixelAt(8, 17)[0] + 0.5f * s, 1e-6f);

    // Boundary 0: every pixel is core and the error is always 0. The write
    // mask, stretched over the target, keeps the paste to its open left half.
    Image mask(20, 20, Gray);
    mask.wrapMode = Clamp;
    for (int i = 0; i < 20 * 20; ++i)
        mask.data[i] = i % 20 < 10 ? 1.0f : 0.0f;
    const Image greyBefore(grey);
    BlendedPatch bare;
    bare.init(target.get(), 8, 0);
    bare.x = 30, bare.y = 35; // wraps across the target's right and top edges
    PatchSource other(source.get(), 20, 20, 4, 0.0f, 1.0f, 1.0f);
    EXPECT_EQ(bare.evaluate(other, filled.data(), true), 0.0f);
    std::fill(filled.begin(), filled.end(), 0);
    bare.paste(filled.data(), &mask);
    for (int dy = 0; dy < 8; ++dy)
        for (int dx = 0; dx < 8; ++dx) {
            const int tx = (30 + dx) % 40, ty = (35 + dy) % 40;
            EXPECT_EQ(filled[ty * 40 + tx], tx < 20 ? 1 : 0) << tx;
            const Pixel expected = tx < 20 ? source->layers[2]->pixelAt(20 + dx, 20 + dy) : greyBefore.pixelAt(tx, ty);
            EXPECT_EQ(grey.pixelAt(tx, ty)[0], expected[0]) << tx;
        }
}

TEST(Patch, CutoutCutFollowsTheLowErrorValleyAndFillsThePatch)
{
    auto source = EngineTest::makeSource(32, 32);
    auto target = makeTarget(48, 48, *source);
    CutoutPatch patch;
    patch.init(target.get(), 12, 8); // full size 28
    patch.feather = 0;
    const int F = 28;
    // High error everywhere except column 4 of the left strip.
    for (int i = 0; i < F * F; ++i)
        patch.bestErrorMap->data[i] = i % F == 4 ? 0.0f : 1.0f;
    patch.computeWeights();
    const float* w = patch.weightImage->data;
    for (int dy = 8; dy < 20; ++dy) // away from the other strips
        for (int dx = 0; dx < 20; ++dx)
            EXPECT_EQ(w[dy * F + dx], dx < 4 ? 0.0f : 1.0f) << dx << "," << dy;
    // Feathered weights rise monotonically across the cut, within 0..1.
    patch.feather = 4;
    patch.computeWeights();
    for (int i = 0; i < F * F; ++i)
        ASSERT_TRUE(w[i] >= 0.0f && w[i] <= 1.0f) << i;
    for (int dx = 1; dx < 14; ++dx)
        EXPECT_GE(w[14 * F + dx], w[14 * F + dx - 1]);
    EXPECT_LT(w[14 * F + 1], 0.01f);
    EXPECT_LT(w[14 * F + 3], 0.5f);
    EXPECT_GT(w[14 * F + 4], 0.5f);
    EXPECT_EQ(w[14 * F + 7], 1.0f);

    // On an empty target the whole patch takes the source and is filled.
    std::vector<uint8_t> filled(48 * 48, 0);
    patch.x = 40, patch.y = 3; // wraps
    PatchSource candidate(source.get(), 1, 2, 14, 0.0f, 1.0f, 1.0f);
    EXPECT_EQ(patch.evaluate(candidate, filled.data(), true), 0.0f);
    patch.paste(filled.data(), nullptr);
    EXPECT_EQ(patch.bestSource, nullptr);
    for (int dy = 0; dy < F; ++dy)
        for (int dx = 0; dx < F; ++dx) {
            const int tx = (40 + dx) % 48, ty = 3 + dy;
            ASSERT_EQ(filled[ty * 48 + tx], 1);
            ASSERT_NEAR(target->layers[1]->pixelAt(tx, ty)[2], source->layers[1]->pixelAt(1 + dx, 2 + dy)[2], 1e-6f);
        }

    // Half filled: the cut gives the unfilled pixels weight 1, and every
    // pixel becomes lerp(target, source, weight), unfilled or not.
    scribble(*target, 5);
    const Image before = *target->layers[0];
    for (int i = 0; i < 48 * 48; ++i)
        filled[i] = i % 48 < 24 ? 1 : 0;
    patch.x = 10, patch.y = 10; // columns 10..37: both halves
    patch.feather = 4;
    patch.evaluate(candidate, filled.data(), true);
    patch.paste(filled.data(), nullptr);
    int blended = 0;
    for (int dy = 0; dy < F; ++dy)
        for (int dx = 0; dx < F; ++dx) {
            const int tx = 10 + dx, ty = 10 + dy;
            const float a = w[dy * F + dx];
            if (tx >= 24) {
                ASSERT_EQ(a, 1.0f) << dx << "," << dy;
            }
            blended += a > 0.0f && a < 1.0f;
            ASSERT_EQ(filled[ty * 48 + tx], 1);
            for (int c = 0; c < 3; ++c) {
                const float t = before.pixelAt(tx, ty)[c], s = source->layers[0]->pixelAt(1 + dx, 2 + dy)[c];
                const float expected = a < 1.0f ? (s - t) * a + t : s;
                ASSERT_NEAR(target->layers[0]->pixelAt(tx, ty)[c], expected, 1e-6f) << dx << "," << dy;
            }
        }
    EXPECT_GT(blended, 0); // the feathered seam was crossed
}

// A write mask of another shape than the target is stretched over each axis
// by its own size; sampled normals turn with the patch.
TEST(Patch, NonSquareWriteMaskAndTurnedNormals)
{
    auto source = EngineTest::makeSource(32, 32);
    auto target = makeTarget(32, 32, *source);
    scribble(*target, 9);
    const Image greyBefore(*target->layers[2]);
    std::vector<uint8_t> filled(32 * 32, 1);
    // 8 wide, 4 high: the top two rows open. Row ty of the target reads mask
    // row ty / 32 * 4, so rows 0..11 or so are written, none below 16.
    Image mask(8, 4, Gray);
    mask.wrapMode = Clamp;
    for (int i = 0; i < 16; ++i)
        mask.data[i] = 1.0f;
    BlendedPatch patch;
    patch.init(target.get(), 32, 0);
    PatchSource candidate(source.get(), 0, 0, 16, 0.0f, 1.0f, 1.0f);
    patch.evaluate(candidate, filled.data(), true);
    patch.paste(filled.data(), &mask);
    int written = 0;
    for (int ty = 0; ty < 32; ++ty)
        for (int tx = 0; tx < 32; ++tx) {
            Pixel m(Gray);
            mask.sample(float(tx) / 32.0f * 8.0f, float(ty) / 32.0f * 4.0f, Linear, m);
            const bool open = m[0] > 0.5f;
            const float expected = open ? source->layers[2]->pixelAt(tx, ty)[0] : greyBefore.pixelAt(tx, ty)[0];
            ASSERT_EQ(target->layers[2]->pixelAt(tx, ty)[0], expected) << tx << "," << ty;
            if (ty >= 16) {
                ASSERT_FALSE(open) << ty;
            }
            written += open;
        }
    EXPECT_GE(written, 32 * 8);

    // A constant normal sampled through a turned patch turns back by the
    // patch direction: (x, y) -> (x dirY + y dirX, y dirY - x dirX).
    Image& normal = *source->layers[1];
    auto setNormal = [&](float x, float y, float z) {
        for (uint64_t i = 0; i < normal.pixelCount(); ++i) {
            normal.data[3 * i] = x;
            normal.data[3 * i + 1] = y;
            normal.data[3 * i + 2] = z;
        }
    };
    setNormal(0.6f, 0.0f, 0.8f);
    PatchSource quarter(source.get(), 4, 4, 8, 1.0f, 0.0f, 1.0f);
    Pixel n = quarter.sourcePixels(3, 5)[1];
    EXPECT_NEAR(n[0], 0.0f, 1e-6f);
    EXPECT_NEAR(n[1], -0.6f, 1e-6f);
    EXPECT_NEAR(n[2], 0.8f, 1e-6f);
    setNormal(0.0f, 0.6f, 0.8f);
    PatchSource tilted(source.get(), 4, 4, 8, 0.6f, 0.8f, 1.0f);
    n = tilted.sourcePixels(7, 2)[1];
    EXPECT_NEAR(n[0], 0.36f, 1e-6f);
    EXPECT_NEAR(n[1], 0.48f, 1e-6f);
    EXPECT_NEAR(n[2], 0.8f, 1e-6f);
    // The paste writes the same turned normal into the core.
    patch.init(target.get(), 12, 0);
    patch.x = 3, patch.y = 5;
    patch.evaluate(tilted, filled.data(), true);
    patch.paste(filled.data(), nullptr);
    for (int dy = 0; dy < 12; ++dy)
        for (int dx = 0; dx < 12; ++dx) {
            const Pixel out = target->layers[1]->pixelAt(3 + dx, 5 + dy);
            ASSERT_NEAR(out[0], 0.36f, 1e-5f) << dx << "," << dy;
            ASSERT_NEAR(out[1], 0.48f, 1e-5f) << dx << "," << dy;
            ASSERT_NEAR(out[2], 0.8f, 1e-5f) << dx << "," << dy;
        }
}
