#include "ProceduralTextures.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace ProceduralTextures {
namespace {

// Integer hash to a float in 0..1.
float hash(uint32_t x, uint32_t y, uint32_t seed)
{
    uint32_t h = x * 374761393u + y * 668265263u + seed * 2246822519u;
    h = (h ^ (h >> 13)) * 1274126177u;
    h ^= h >> 16;
    return float(h & 0xFFFFFFu) / float(0xFFFFFF);
}

float smooth(float t) { return t * t * (3.0f - 2.0f * t); }

// Value noise on a lattice of `cells` x `cells` that wraps around.
float periodicNoise(float u, float v, uint32_t cells, uint32_t seed)
{
    const float x = u * float(cells);
    const float y = v * float(cells);
    const int32_t x0 = int32_t(std::floor(x));
    const int32_t y0 = int32_t(std::floor(y));
    const float fx = smooth(x - float(x0));
    const float fy = smooth(y - float(y0));
    auto corner = [&](int32_t cx, int32_t cy) {
        const uint32_t wx = uint32_t((cx % int32_t(cells) + int32_t(cells)) % int32_t(cells));
        const uint32_t wy = uint32_t((cy % int32_t(cells) + int32_t(cells)) % int32_t(cells));
        return hash(wx, wy, seed);
    };
    const float a = corner(x0, y0) + (corner(x0 + 1, y0) - corner(x0, y0)) * fx;
    const float b = corner(x0, y0 + 1) + (corner(x0 + 1, y0 + 1) - corner(x0, y0 + 1)) * fx;
    return a + (b - a) * fy;
}

// Fractal sum of periodic noise, 0..1.
float fbm(float u, float v, uint32_t baseCells, int octaves, uint32_t seed)
{
    float sum = 0.0f, amplitude = 0.5f, total = 0.0f;
    uint32_t cells = baseCells;
    for (int i = 0; i < octaves; ++i) {
        sum += amplitude * periodicNoise(u, v, cells, seed + uint32_t(i) * 101u);
        total += amplitude;
        amplitude *= 0.5f;
        cells *= 2;
    }
    return sum / total;
}

// Encodes the normals of a wrapping height field as colour.
Image normalsFromHeight(const Image& height, float strength)
{
    const uint32_t n = height.width;
    Image normal(n, n, RGB);
    for (uint32_t y = 0; y < n; ++y)
        for (uint32_t x = 0; x < n; ++x) {
            const int32_t ix = int32_t(x), iy = int32_t(y);
            const float dx = height.pixelAt(ix + 1, iy)[0] - height.pixelAt(ix - 1, iy)[0];
            const float dy = height.pixelAt(ix, iy + 1)[0] - height.pixelAt(ix, iy - 1)[0];
            float nx = -dx * strength, ny = -dy * strength, nz = 1.0f;
            const float length = std::sqrt(nx * nx + ny * ny + nz * nz);
            nx /= length;
            ny /= length;
            nz /= length;
            Pixel p = normal.pixelAt(ix, iy);
            p[0] = nx * 0.5f + 0.5f;
            p[1] = ny * 0.5f + 0.5f;
            p[2] = nz * 0.5f + 0.5f;
        }
    return normal;
}

float lerp(float a, float b, float t) { return a + (b - a) * t; }

} // namespace

Material cobblestones(uint32_t size, uint32_t seed)
{
    // Jittered grid of stone centres, one per cell, distances measured on the torus.
    const uint32_t cells = 8;
    const float cellSize = float(size) / float(cells);
    std::vector<float> px(cells * cells), py(cells * cells);
    for (uint32_t j = 0; j < cells; ++j)
        for (uint32_t i = 0; i < cells; ++i) {
            px[i + cells * j] = (float(i) + 0.2f + 0.6f * hash(i, j, seed)) * cellSize;
            py[i + cells * j] = (float(j) + 0.2f + 0.6f * hash(i, j, seed + 7)) * cellSize;
        }

    Material m;
    m.color.allocate(size, size, RGB);
    m.height.allocate(size, size, Gray);
    m.roughness.allocate(size, size, Gray);
    const float period = float(size);
    for (uint32_t y = 0; y < size; ++y)
        for (uint32_t x = 0; x < size; ++x) {
            const int32_t ci = int32_t(float(x) / cellSize);
            const int32_t cj = int32_t(float(y) / cellSize);
            float d1 = 1e9f, d2 = 1e9f;
            uint32_t nearest = 0;
            for (int32_t j = cj - 2; j <= cj + 2; ++j)
                for (int32_t i = ci - 2; i <= ci + 2; ++i) {
                    const uint32_t wi = uint32_t((i + int32_t(cells)) % int32_t(cells));
                    const uint32_t wj = uint32_t((j + int32_t(cells)) % int32_t(cells));
                    const uint32_t k = wi + cells * wj;
                    float dx = std::fabs(float(x) - px[k]);
                    float dy = std::fabs(float(y) - py[k]);
                    dx = std::min(dx, period - dx);
                    dy = std::min(dy, period - dy);
                    const float d = std::sqrt(dx * dx + dy * dy);
                    if (d < d1) {
                        d2 = d1;
                        d1 = d;
                        nearest = k;
                    } else if (d < d2) {
                        d2 = d;
                    }
                }
            const float u = float(x) / period, v = float(y) / period;
            const float edge = (d2 - d1) * 0.5f; // distance to the mortar line
            const float stone = smooth(std::clamp(edge / 7.0f, 0.0f, 1.0f));
            const float dome = 1.0f - 0.35f * std::clamp(d1 / (cellSize * 0.75f), 0.0f, 1.0f);
            const float grain = fbm(u, v, 16, 4, seed + 11);
            const float tone = hash(nearest, 3, seed + 5);
            const float heightValue = std::clamp(stone * dome * (0.75f + 0.25f * tone) + 0.08f * grain, 0.0f, 1.0f);

            Pixel c = m.color.pixelAt(int32_t(x), int32_t(y));
            const float stoneR = lerp(0.38f, 0.58f, tone) + 0.12f * (grain - 0.5f);
            const float stoneG = lerp(0.36f, 0.52f, tone) + 0.10f * (grain - 0.5f);
            const float stoneB = lerp(0.34f, 0.47f, tone) + 0.08f * (grain - 0.5f);
            const float mortar = 0.20f + 0.10f * grain;
            c[0] = lerp(mortar * 1.05f, stoneR, stone);
            c[1] = lerp(mortar, stoneG, stone);
            c[2] = lerp(mortar * 0.85f, stoneB, stone);
            m.height.pixelAt(int32_t(x), int32_t(y))[0] = heightValue;
            m.roughness.pixelAt(int32_t(x), int32_t(y))[0] =
                std::clamp(lerp(0.92f, 0.55f + 0.2f * grain, stone), 0.0f, 1.0f);
        }
    m.normal = normalsFromHeight(m.height, 6.0f);
    return m;
}

Material moss(uint32_t size, uint32_t seed)
{
    Material m;
    m.color.allocate(size, size, RGB);
    m.height.allocate(size, size, Gray);
    m.roughness.allocate(size, size, Gray);
    for (uint32_t y = 0; y < size; ++y)
        for (uint32_t x = 0; x < size; ++x) {
            const float u = float(x) / float(size), v = float(y) / float(size);
            const float clumps = fbm(u, v, 6, 3, seed);
            const float fibres = fbm(u, v, 64, 2, seed + 31);
            const float heightValue = std::clamp(0.7f * clumps + 0.3f * fibres, 0.0f, 1.0f);
            const float light = smooth(std::clamp((heightValue - 0.3f) / 0.5f, 0.0f, 1.0f));
            Pixel c = m.color.pixelAt(int32_t(x), int32_t(y));
            c[0] = lerp(0.06f, 0.42f, light) + 0.05f * (fibres - 0.5f);
            c[1] = lerp(0.16f, 0.55f, light) + 0.08f * (fibres - 0.5f);
            c[2] = lerp(0.04f, 0.12f, light);
            m.height.pixelAt(int32_t(x), int32_t(y))[0] = heightValue;
            m.roughness.pixelAt(int32_t(x), int32_t(y))[0] = std::clamp(0.95f - 0.2f * light, 0.0f, 1.0f);
        }
    m.normal = normalsFromHeight(m.height, 3.0f);
    return m;
}

Image blobMask(uint32_t size, uint32_t seed)
{
    Image mask(size, size, Gray);
    for (uint32_t y = 0; y < size; ++y)
        for (uint32_t x = 0; x < size; ++x) {
            const float n = fbm(float(x) / float(size), float(y) / float(size), 4, 4, seed);
            mask.pixelAt(int32_t(x), int32_t(y))[0] = n > 0.5f ? 1.0f : 0.0f;
        }
    return mask;
}

Image swirlDirections(uint32_t size)
{
    Image directions(size, size, Normal);
    const float centre = float(size) * 0.5f;
    for (uint32_t y = 0; y < size; ++y)
        for (uint32_t x = 0; x < size; ++x) {
            const float dx = float(x) - centre, dy = float(y) - centre;
            const float length = std::max(1.0f, std::sqrt(dx * dx + dy * dy));
            Pixel p = directions.pixelAt(int32_t(x), int32_t(y));
            p[0] = -dy / length;
            p[1] = dx / length;
            p[2] = 0.0f;
        }
    return directions;
}

Image scaleGradient(uint32_t size)
{
    Image scale(size, size, Gray);
    for (uint32_t y = 0; y < size; ++y)
        for (uint32_t x = 0; x < size; ++x)
            scale.pixelAt(int32_t(x), int32_t(y))[0] = 0.5f + float(x) / float(size - 1);
    return scale;
}

} // namespace ProceduralTextures
