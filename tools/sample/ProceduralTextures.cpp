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
float smoothStep(float edge0, float edge1, float x) { return smooth(std::clamp((x - edge0) / (edge1 - edge0), 0.0f, 1.0f)); }
float lerp(float a, float b, float t) { return a + (b - a) * t; }

int32_t wrapIndex(int32_t i, int32_t n) { return ((i % n) + n) % n; }

// Value noise on a lattice of `cells` x `cells` that wraps around.
float periodicNoise(float u, float v, uint32_t cells, uint32_t seed)
{
    const float x = u * float(cells);
    const float y = v * float(cells);
    const int32_t x0 = int32_t(std::floor(x));
    const int32_t y0 = int32_t(std::floor(y));
    const float fx = smooth(x - float(x0));
    const float fy = smooth(y - float(y0));
    const int32_t n = int32_t(cells);
    auto corner = [&](int32_t cx, int32_t cy) {
        return hash(uint32_t(wrapIndex(cx, n)), uint32_t(wrapIndex(cy, n)), seed);
    };
    const float a = lerp(corner(x0, y0), corner(x0 + 1, y0), fx);
    const float b = lerp(corner(x0, y0 + 1), corner(x0 + 1, y0 + 1), fx);
    return lerp(a, b, fy);
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

// One jittered feature point per cell of a wrapping grid; queries measure
// offsets on the torus, so the cell pattern tiles.
class WrappingCells
{
public:
    // `softness` (pixels) rounds the corners of the border distance; 0 keeps it exact.
    WrappingCells(uint32_t cells, float period, float jitter, float softness, uint32_t seed)
        : softness(softness)
        , cells(int32_t(cells))
        , cellSize(period / float(cells))
        , period(period)
        , px(cells * cells)
        , py(cells * cells)
    {
        const float margin = 0.5f * (1.0f - jitter);
        for (uint32_t j = 0; j < cells; ++j)
            for (uint32_t i = 0; i < cells; ++i) {
                px[i + cells * j] = (float(i) + margin + jitter * hash(i, j, seed)) * cellSize;
                py[i + cells * j] = (float(j) + margin + jitter * hash(i, j, seed + 7)) * cellSize;
            }
    }

    struct Nearest
    {
        uint32_t index = 0;
        float distance = 0.0f; // to the nearest point
        float border = 0.0f;   // to the nearest cell border (the bisector with a neighbour)
    };

    Nearest nearest(float x, float y) const
    {
        const int32_t ci = int32_t(std::floor(x / cellSize));
        const int32_t cj = int32_t(std::floor(y / cellSize));
        float ox[25], oy[25];
        uint32_t ids[25];
        int count = 0, best = 0;
        float bestD2 = 1e30f;
        for (int32_t j = cj - 2; j <= cj + 2; ++j)
            for (int32_t i = ci - 2; i <= ci + 2; ++i) {
                const uint32_t k = uint32_t(wrapIndex(i, cells) + cells * wrapIndex(j, cells));
                ox[count] = wrapOffset(px[k] - x);
                oy[count] = wrapOffset(py[k] - y);
                ids[count] = k;
                const float d2 = ox[count] * ox[count] + oy[count] * oy[count];
                if (d2 < bestD2) {
                    bestD2 = d2;
                    best = count;
                }
                ++count;
            }
        // Distance to the bisector between the nearest point a and another
        // point b: (|b|^2 - |a|^2) / (2 |b - a|), with offsets from the query.
        // A soft minimum over the bisectors rounds the cell corners, so that
        // profiles built on it have no creases where two borders meet.
        float border = 1e30f;
        float bisector[25];
        int bisectors = 0;
        for (int n = 0; n < count; ++n) {
            if (n == best || ids[n] == ids[best])
                continue;
            const float dx = ox[n] - ox[best], dy = oy[n] - oy[best];
            const float gap = std::sqrt(dx * dx + dy * dy);
            if (gap < 1e-6f)
                continue;
            const float d2 = ox[n] * ox[n] + oy[n] * oy[n];
            bisector[bisectors] = (d2 - bestD2) / (2.0f * gap);
            border = std::min(border, bisector[bisectors++]);
        }
        if (softness > 0.0f && bisectors > 0) {
            float sum = 0.0f;
            for (int n = 0; n < bisectors; ++n)
                sum += std::exp(-(bisector[n] - border) / softness);
            border -= softness * std::log(sum);
        }
        return {ids[best], std::sqrt(bestD2), border};
    }

    float size() const { return cellSize; }

private:
    // Shortest signed offset on a circle of length `period`.
    float wrapOffset(float d) const
    {
        if (d > 0.5f * period)
            return d - period;
        if (d < -0.5f * period)
            return d + period;
        return d;
    }

    float softness;
    int32_t cells;
    float cellSize;
    float period;
    std::vector<float> px, py;
};

// Encodes the normals of a wrapping height field as colour, +Y towards the
// top row. `strength` scales the height difference across two pixels.
Image normalsFromHeight(const Image& height, float strength)
{
    const uint32_t w = height.width, h = height.height;
    Image normal(w, h, RGB);
#pragma omp parallel for schedule(static)
    for (int32_t row = 0; row < int32_t(h); ++row)
        for (uint32_t x = 0, y = uint32_t(row); x < w; ++x) {
            const int32_t ix = int32_t(x), iy = int32_t(y);
            const float dx = height.pixelAt(ix + 1, iy)[0] - height.pixelAt(ix - 1, iy)[0];
            const float dy = height.pixelAt(ix, iy + 1)[0] - height.pixelAt(ix, iy - 1)[0];
            const float nx = -dx * strength, ny = -dy * strength;
            const float length = std::sqrt(nx * nx + ny * ny + 1.0f);
            Pixel p = normal.pixelAt(ix, iy);
            p[0] = nx / length * 0.5f + 0.5f;
            p[1] = ny / length * 0.5f + 0.5f;
            p[2] = 1.0f / length * 0.5f + 0.5f;
        }
    return normal;
}

void allocateMaterial(Material& m, uint32_t size)
{
    m.color.allocate(size, size, RGB);
    m.height.allocate(size, size, Gray);
    m.roughness.allocate(size, size, Gray);
}

void setColor(Image& image, uint32_t x, uint32_t y, float r, float g, float b)
{
    Pixel p = image.pixelAt(int32_t(x), int32_t(y));
    p[0] = std::clamp(r, 0.0f, 1.0f);
    p[1] = std::clamp(g, 0.0f, 1.0f);
    p[2] = std::clamp(b, 0.0f, 1.0f);
}

void setGray(Image& image, uint32_t x, uint32_t y, float value)
{
    image.pixelAt(int32_t(x), int32_t(y))[0] = std::clamp(value, 0.0f, 1.0f);
}

} // namespace

Material cobblestones(uint32_t size, uint32_t seed)
{
    Material m;
    allocateMaterial(m, size);
    if (size == 0)
        return m;
    const float period = float(size);
    const WrappingCells stones(6, period, 0.6f, period / 80.0f, seed);
    // Joint and bevel widths follow the stone size, so any resolution looks alike.
    const float jointHalfWidth = stones.size() * 0.01f;
    const float bevel = stones.size() * 0.32f;
    const float wobble = stones.size() * 0.08f;

    // Every pixel depends only on its position: rows run in parallel.
#pragma omp parallel for schedule(static)
    for (int32_t row = 0; row < int32_t(size); ++row)
        for (uint32_t x = 0, y = uint32_t(row); x < size; ++x) {
            const float u = float(x) / period, v = float(y) / period;
            // Bend the cell borders so that stones are not straight-edged polygons.
            const float bendX = (fbm(u, v, 8, 2, seed + 41) - 0.5f) * 2.0f * wobble;
            const float bendY = (fbm(u, v, 8, 2, seed + 43) - 0.5f) * 2.0f * wobble;
            const WrappingCells::Nearest cell = stones.nearest(float(x) + bendX, float(y) + bendY);

            const float grain = fbm(u, v, 32, 4, seed + 11);
            const float tone = hash(cell.index, 3, seed + 5);
            const float tint = hash(cell.index, 9, seed + 5);
            // Quarter-circle profile across the bevel: a rounded stone top.
            const float t = std::clamp((cell.border - jointHalfWidth) / bevel, 0.0f, 1.0f);
            const float profile = std::sqrt(1.0f - (1.0f - t) * (1.0f - t));
            const float centre = std::min(1.0f, cell.distance / stones.size());
            const float dome = 1.0f - 0.3f * centre * centre;
            const float stoneTop = (0.6f + 0.3f * tone) * dome;
            const float mortarLevel = 0.08f + 0.06f * grain;
            const float heightValue = std::max(mortarLevel, profile * stoneTop + 0.06f * (grain - 0.5f));
            setGray(m.height, x, y, heightValue);

            const float onStone = smoothStep(0.0f, 0.12f, t);
            // Stone edges darker, as dirt collects there.
            const float shade = 0.7f + 0.3f * profile;
            const float r = (lerp(0.40f, 0.62f, tone) + 0.05f * tint + 0.14f * (grain - 0.5f)) * shade;
            const float g = (lerp(0.38f, 0.56f, tone) + 0.02f * tint + 0.12f * (grain - 0.5f)) * shade;
            const float b = (lerp(0.35f, 0.50f, tone) - 0.03f * tint + 0.10f * (grain - 0.5f)) * shade;
            const float mortar = 0.17f + 0.12f * grain;
            setColor(m.color, x, y, lerp(mortar * 1.1f, r, onStone), lerp(mortar, g, onStone),
                     lerp(mortar * 0.85f, b, onStone));
            // Worn stone tops are smoother than joints and stone edges.
            setGray(m.roughness, x, y, lerp(0.93f, 0.78f - 0.25f * profile + 0.1f * grain, onStone));
        }
    m.normal = normalsFromHeight(m.height, 8.0f);
    return m;
}

Material moss(uint32_t size, uint32_t seed)
{
    Material m;
    allocateMaterial(m, size);
    if (size == 0)
        return m;
    const float period = float(size);
#pragma omp parallel for schedule(static)
    for (int32_t row = 0; row < int32_t(size); ++row)
        for (uint32_t x = 0, y = uint32_t(row); x < size; ++x) {
            const float u = float(x) / period, v = float(y) / period;
            // Large patches of moss with some soil showing between them ...
            const float patches = smoothStep(0.3f, 0.55f, fbm(u, v, 4, 4, seed));
            // ... made of soft round clumps ...
            const float clumps = smoothStep(0.25f, 0.75f, fbm(u, v, 20, 3, seed + 17));
            // ... with fine fibres on top.
            const float fibres = fbm(u, v, 128, 2, seed + 31);
            const float growth = patches * (0.35f + 0.65f * clumps);
            const float heightValue = 0.1f + 0.75f * growth + 0.1f * (fibres - 0.5f) * (0.3f + patches);
            setGray(m.height, x, y, heightValue);

            // Clump tops catch light and turn yellow-green; hollows stay dark.
            const float light = smoothStep(0.1f, 0.9f, growth) * (0.85f + 0.3f * fibres);
            const float hue = fbm(u, v, 8, 2, seed + 53);
            const float cover = smoothStep(0.02f, 0.3f, growth);
            const float soil = 0.8f + 0.4f * fibres;
            const float r = lerp(0.17f * soil, lerp(0.06f, 0.22f + 0.14f * hue, light), cover);
            const float g = lerp(0.12f * soil, lerp(0.13f, 0.46f, light), cover);
            const float b = lerp(0.07f * soil, lerp(0.03f, 0.10f, light), cover);
            setColor(m.color, x, y, r, g, b);
            setGray(m.roughness, x, y, 0.96f - 0.12f * light);
        }
    m.normal = normalsFromHeight(m.height, 5.0f);
    return m;
}

Material gravel(uint32_t size, uint32_t seed)
{
    Material m;
    m.color.allocate(size, size, RGB);
    m.height.allocate(size, size, Gray);
    if (size == 0)
        return m;
    const float period = float(size);
    // About 12 pixels per pebble at 512 pixels, whatever the size.
    const uint32_t cells = std::max(2u, size / 12);
    const WrappingCells pebbles(cells, period, 0.9f, 0.0f, seed);
#pragma omp parallel for schedule(static)
    for (int32_t row = 0; row < int32_t(size); ++row)
        for (uint32_t x = 0, y = uint32_t(row); x < size; ++x) {
            const float u = float(x) / period, v = float(y) / period;
            const WrappingCells::Nearest cell = pebbles.nearest(float(x), float(y));
            const float tone = hash(cell.index, 1, seed + 3);
            const float hue = hash(cell.index, 2, seed + 3);
            // Sensor-like noise on every pixel, and dirt at coarser scales.
            const float grain = hash(x, y, seed + 19) - 0.5f;
            const float dirt = fbm(u, v, 16, 5, seed + 23);
            const float round = std::clamp(cell.border / (pebbles.size() * 0.35f), 0.0f, 1.0f);
            const float dome = std::sqrt(round * (2.0f - round));
            setGray(m.height, x, y, 0.15f + 0.6f * dome * (0.5f + 0.5f * tone) + 0.2f * (dirt - 0.5f) + 0.08f * grain);
            const float shade = 0.45f + 0.55f * dome;
            const float r = (lerp(0.25f, 0.85f, tone) + 0.2f * (hue - 0.5f)) * shade + 0.3f * (dirt - 0.5f) + 0.12f * grain;
            const float g = lerp(0.22f, 0.75f, tone) * shade + 0.25f * (dirt - 0.5f) + 0.12f * grain;
            const float b = (lerp(0.2f, 0.7f, tone) - 0.2f * (hue - 0.5f)) * shade + 0.2f * (dirt - 0.5f) + 0.12f * grain;
            setColor(m.color, x, y, r, g, b);
        }
    m.normal = normalsFromHeight(m.height, 6.0f);
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
            const float dx = float(x) + 0.5f - centre, dy = float(y) + 0.5f - centre;
            const float length = std::sqrt(dx * dx + dy * dy);
            Pixel p = directions.pixelAt(int32_t(x), int32_t(y));
            // The centre pixel of an odd size has no tangent: keep the
            // default direction, up.
            p[0] = length > 0.0f ? -dy / length : 0.0f;
            p[1] = length > 0.0f ? dx / length : 1.0f;
            p[2] = 0.0f;
        }
    return directions;
}

Image scaleGradient(uint32_t size)
{
    Image scale(size, size, Gray);
    const float span = size > 1 ? float(size - 1) : 1.0f;
    for (uint32_t y = 0; y < size; ++y)
        for (uint32_t x = 0; x < size; ++x)
            scale.pixelAt(int32_t(x), int32_t(y))[0] = 0.5f + float(x) / span;
    return scale;
}

} // namespace ProceduralTextures
