#include "UvSeamFixer.h"

#include "Image.h"
#include "LogMessage.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace {

struct Vec2
{
    float x, y;
};

Vec2 operator-(Vec2 a, Vec2 b) { return {a.x - b.x, a.y - b.y}; }
Vec2 operator+(Vec2 a, Vec2 b) { return {a.x + b.x, a.y + b.y}; }
Vec2 operator*(Vec2 a, float s) { return {a.x * s, a.y * s}; }
float dot(Vec2 a, Vec2 b) { return a.x * b.x + a.y * b.y; }

// One UV edge in texel units with the unit normal towards its triangle.
struct TexelEdge
{
    Vec2 start, delta, inward;
    float length;

    TexelEdge(const float* uv0, const float* uv1, const float* inner, float width, float height)
    {
        start = {uv0[0] * width, uv0[1] * height};
        const Vec2 end = {uv1[0] * width, uv1[1] * height};
        delta = end - start;
        length = std::sqrt(dot(delta, delta));
        inward = length > 0.0f ? Vec2{-delta.y / length, delta.x / length} : Vec2{0.0f, 0.0f};
        const Vec2 third = {inner[0] * width, inner[1] * height};
        if (dot(third - start, inward) < 0.0f)
            inward = inward * -1.0f;
    }
    Vec2 at(float t) const { return start + delta * t; }

    // Where the island's value at `t` is read: `inset` texels in from the
    // edge and at least as far from its ends, which may lie on the island's
    // outline, so that the bilinear footprint stays on the island.
    Vec2 inside(float t, float inset) const
    {
        const float margin = inset / length;
        t = margin < 0.5f ? std::clamp(t, margin, 1.0f - margin) : 0.5f;
        return at(t) + inward * inset;
    }
};

// Bilinear sample at a texel-unit position (texel centres at +0.5), clamped
// to the image.
void sampleClamped(const Image& image, Vec2 p, float* out)
{
    const uint32_t channels = image.channels();
    const float fx = std::clamp(p.x - 0.5f, 0.0f, float(image.width - 1));
    const float fy = std::clamp(p.y - 0.5f, 0.0f, float(image.height - 1));
    const uint32_t x0 = uint32_t(fx), y0 = uint32_t(fy);
    const uint32_t x1 = std::min(x0 + 1, image.width - 1), y1 = std::min(y0 + 1, image.height - 1);
    const float ax = fx - float(x0), ay = fy - float(y0);
    const float* p00 = image.data + channels * (uint64_t(y0) * image.width + x0);
    const float* p10 = image.data + channels * (uint64_t(y0) * image.width + x1);
    const float* p01 = image.data + channels * (uint64_t(y1) * image.width + x0);
    const float* p11 = image.data + channels * (uint64_t(y1) * image.width + x1);
    for (uint32_t c = 0; c < channels; ++c)
        out[c] = (p00[c] * (1 - ax) + p10[c] * ax) * (1 - ay) + (p01[c] * (1 - ax) + p11[c] * ax) * ay;
}

void normalize3(float* v)
{
    const float length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    if (length > 1e-12f) {
        v[0] /= length;
        v[1] /= length;
        v[2] /= length;
    }
}

// Inclusive rounding of a texel-unit range to the texels whose centres may
// lie within it, clamped to 0 .. size-1. False when none do.
bool texelRange(float low, float high, uint32_t size, int32_t& first, int32_t& last)
{
    if (!(high >= 0.0f) || !(low <= float(size)))
        return false;
    first = std::max(0, int32_t(std::floor(std::max(low, -1.0f))));
    last = std::min(int32_t(size) - 1, int32_t(std::ceil(std::min(high, float(size)))));
    return first <= last;
}

} // namespace

UvSeamFixer::UvSeamFixer(const std::vector<MeshVertex>& vertices)
    : seams(findUvSeams(vertices))
{
    const size_t triangleCount = vertices.size() / 3;
    for (size_t t = 0; t < triangleCount; ++t) {
        float uvs[6];
        bool finite = true;
        for (int k = 0; k < 3; ++k) {
            uvs[2 * k] = vertices[t * 3 + k].texCoord[0];
            uvs[2 * k + 1] = vertices[t * 3 + k].texCoord[1];
            finite = finite && std::isfinite(uvs[2 * k]) && std::isfinite(uvs[2 * k + 1]);
        }
        if (!finite)
            continue;
        triangleUvs.insert(triangleUvs.end(), uvs, uvs + 6);
        triangleIslands.push_back(seams.triangleIsland[t]);
    }
}

std::vector<int32_t> UvSeamFixer::coverage(uint32_t width, uint32_t height) const
{
    std::vector<int32_t> owner(size_t(width) * height, -1);
    for (size_t t = 0; t < triangleIslands.size(); ++t) {
        const float* uv = &triangleUvs[t * 6];
        const Vec2 a = {uv[0] * width, uv[1] * height}, b = {uv[2] * width, uv[3] * height},
                   c = {uv[4] * width, uv[5] * height};
        const float area = (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
        if (std::abs(area) < 1e-12f)
            continue;
        int32_t x0, x1, y0, y1;
        if (!texelRange(std::min({a.x, b.x, c.x}) - 0.5f, std::max({a.x, b.x, c.x}) - 0.5f, width, x0, x1) ||
            !texelRange(std::min({a.y, b.y, c.y}) - 0.5f, std::max({a.y, b.y, c.y}) - 0.5f, height, y0, y1))
            continue;
        // Edge functions, signed by the winding, so both windings count.
        const float sign = area > 0.0f ? 1.0f : -1.0f;
        auto edge = [sign](Vec2 p, Vec2 q, Vec2 r) { return sign * ((q.x - p.x) * (r.y - p.y) - (q.y - p.y) * (r.x - p.x)); };
        for (int32_t y = y0; y <= y1; ++y)
            for (int32_t x = x0; x <= x1; ++x) {
                const Vec2 centre = {x + 0.5f, y + 0.5f};
                if (edge(a, b, centre) >= 0.0f && edge(b, c, centre) >= 0.0f && edge(c, a, centre) >= 0.0f)
                    owner[size_t(y) * width + x] = triangleIslands[t];
            }
    }
    return owner;
}

void UvSeamFixer::blendSeams(Image& layer, const std::vector<int32_t>& owner, std::vector<uint8_t>& filled) const
{
    const uint32_t width = layer.width, height = layer.height, channels = layer.channels();
    const float fade = float(fadeTexels);
    // Edge values come from 1.5 texels inside the island, where a bilinear
    // footprint stays off the far side of the edge at any angle.
    const float inset = 1.5f;
    const Image original(layer);

    // A texel near several seam edges follows the nearest one, so that the
    // matching texels of both sides take the same common value. Stored
    // sparsely: seams touch few texels.
    std::unordered_map<uint64_t, uint32_t> slotOf;
    std::vector<uint64_t> texelOf;
    std::vector<float> nearest; // per slot: distance, weight, target values
    const uint32_t stride = channels + 2;
    std::vector<float> own(channels), other(channels);

    for (const UvSeam& seam : seams.seams) {
        const TexelEdge edgeA(seam.a0, seam.a1, seam.aInner, float(width), float(height));
        const TexelEdge edgeB(seam.b0, seam.b1, seam.bInner, float(width), float(height));
        if (edgeA.length < 1e-4f || edgeB.length < 1e-4f)
            continue;
        for (int side = 0; side < 2; ++side) {
            const TexelEdge& edge = side == 0 ? edgeA : edgeB;
            const TexelEdge& opposite = side == 0 ? edgeB : edgeA;
            const int32_t island = side == 0 ? seam.islandA : seam.islandB;
            const Vec2 end = edge.at(1.0f);
            int32_t x0, x1, y0, y1;
            if (!texelRange(std::min(edge.start.x, end.x) - fade - 0.5f, std::max(edge.start.x, end.x) + fade - 0.5f,
                            width, x0, x1) ||
                !texelRange(std::min(edge.start.y, end.y) - fade - 0.5f, std::max(edge.start.y, end.y) + fade - 0.5f,
                            height, y0, y1))
                continue;
            for (int32_t y = y0; y <= y1; ++y)
                for (int32_t x = x0; x <= x1; ++x) {
                    const uint64_t index = uint64_t(y) * width + x;
                    if (owner[index] != -1 && owner[index] != island)
                        continue;
                    const Vec2 centre = {x + 0.5f, y + 0.5f};
                    const float along = dot(centre - edge.start, edge.delta) / (edge.length * edge.length);
                    const float t = std::clamp(along, 0.0f, 1.0f);
                    const Vec2 offset = centre - edge.at(t);
                    const float distance = std::sqrt(dot(offset, offset));
                    // Beyond the fade, or on the far side of the edge past
                    // the one-texel band that filtering at the edge reads.
                    if (distance > fade || dot(offset, edge.inward) < -1.0f)
                        continue;
                    // Past the edge's ends only the island itself fades; the
                    // empty texels there are left to the padding.
                    if (along != t && owner[index] == -1 && distance > 1.0f)
                        continue;
                    auto found = slotOf.find(index);
                    float* entry;
                    if (found == slotOf.end()) {
                        slotOf.emplace(index, uint32_t(texelOf.size()));
                        texelOf.push_back(index);
                        nearest.resize(nearest.size() + stride);
                        entry = &nearest[nearest.size() - stride];
                    } else {
                        entry = &nearest[size_t(found->second) * stride];
                        if (entry[0] <= distance)
                            continue;
                    }
                    sampleClamped(original, edge.inside(t, inset), own.data());
                    sampleClamped(original, opposite.inside(t, inset), other.data());
                    const float* old = original.data + index * channels;
                    float weight = 1.0f;
                    if (distance > 1.0f) {
                        const float s = (fade - distance) / (fade - 1.0f);
                        weight = s * s * (3.0f - 2.0f * s);
                    }
                    entry[0] = distance;
                    entry[1] = weight;
                    for (uint32_t c = 0; c < channels; ++c) {
                        const float common = 0.5f * (own[c] + other[c]);
                        // Within a texel of the edge both sides hold the same
                        // value; further in, the correction fades out.
                        entry[2 + c] = distance <= 1.0f ? common : old[c] + common - own[c];
                    }
                }
        }
    }

    const bool normals = layer.format == Normal && channels >= 3;
    for (size_t slot = 0; slot < texelOf.size(); ++slot) {
        const uint64_t index = texelOf[slot];
        const float* entry = &nearest[slot * stride];
        const float weight = entry[1];
        float* value = layer.data + index * channels;
        for (uint32_t c = 0; c < channels; ++c)
            value[c] = value[c] * (1.0f - weight) + weight * entry[2 + c];
        if (normals)
            normalize3(value);
        if (weight >= 1.0f)
            filled[index] = 1;
    }
}

void UvSeamFixer::pad(Image& layer, std::vector<uint8_t>& filled) const
{
    const int32_t width = int32_t(layer.width), height = int32_t(layer.height);
    const uint32_t channels = layer.channels();
    const bool normals = layer.format == Normal && channels >= 3;
    // The texels a pass fills and their values, flat: written after the pass.
    std::vector<uint64_t> ring;
    std::vector<float> ringValues;
    std::vector<float> sum(channels);

    // Each pass grows the filled area by one texel: an empty texel takes the
    // mean of its filled neighbours as they were before the pass.
    for (int pass = 0; pass < paddingTexels; ++pass) {
        ring.clear();
        ringValues.clear();
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < width; ++x) {
                const uint64_t index = uint64_t(y) * width + x;
                if (filled[index])
                    continue;
                std::fill(sum.begin(), sum.end(), 0.0f);
                int count = 0;
                for (int32_t dy = -1; dy <= 1; ++dy)
                    for (int32_t dx = -1; dx <= 1; ++dx) {
                        const int32_t nx = x + dx, ny = y + dy;
                        if (nx < 0 || ny < 0 || nx >= width || ny >= height)
                            continue;
                        const uint64_t neighbour = uint64_t(ny) * width + nx;
                        if (!filled[neighbour])
                            continue;
                        const float* value = layer.data + neighbour * channels;
                        for (uint32_t c = 0; c < channels; ++c)
                            sum[c] += value[c];
                        ++count;
                    }
                if (count == 0)
                    continue;
                for (float& s : sum)
                    s /= float(count);
                if (normals)
                    normalize3(sum.data());
                ring.push_back(index);
                ringValues.insert(ringValues.end(), sum.begin(), sum.end());
            }
        if (ring.empty())
            break;
        for (size_t i = 0; i < ring.size(); ++i) {
            std::copy_n(&ringValues[i * channels], channels, layer.data + ring[i] * channels);
            filled[ring[i]] = 1;
        }
    }
}

void UvSeamFixer::fix(Image& layer) const
{
    if (layer.isEmpty() || triangleIslands.empty())
        return;
    const std::vector<int32_t> owner = coverage(layer.width, layer.height);
    std::vector<uint8_t> filled(owner.size());
    for (size_t i = 0; i < owner.size(); ++i)
        filled[i] = owner[i] != -1 ? 1 : 0;
    blendSeams(layer, owner, filled);
    pad(layer, filled);
}

bool fixUvSeams(const std::vector<MeshVertex>& vertices, const std::vector<Image*>& layers)
{
    if (vertices.size() < 3) {
        logMessage(Warning, "No mesh to fix UV seams for");
        return false;
    }
    bool any = false;
    for (const Image* layer : layers)
        any = any || (layer != nullptr && !layer->isEmpty());
    if (!any) {
        logMessage(Warning, "No generated layers to fix UV seams in");
        return false;
    }
    const UvSeamFixer fixer(vertices);
    for (Image* layer : layers)
        if (layer != nullptr)
            fixer.fix(*layer);
    logMessage(Success, "UV seams fixed!");
    return true;
}
