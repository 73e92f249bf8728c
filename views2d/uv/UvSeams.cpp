#include "UvSeams.h"

#include <array>
#include <cmath>
#include <numeric>
#include <unordered_map>

namespace {

const size_t maxUsesPerSeamEdge = 4;

using PointKey = std::array<int64_t, 3>;

// A model point on a 1e-5 grid, so that vertices split at a seam meet again.
PointKey pointKey(const float* p)
{
    return {std::llround(double(p[0]) * 1e5), std::llround(double(p[1]) * 1e5), std::llround(double(p[2]) * 1e5)};
}

struct EdgeKey
{
    PointKey low, high;
    bool operator==(const EdgeKey& other) const { return low == other.low && high == other.high; }
};

struct EdgeKeyHash
{
    size_t operator()(const EdgeKey& key) const
    {
        size_t h = 1469598103934665603ull;
        for (const PointKey* p : {&key.low, &key.high})
            for (int64_t v : *p)
                h = (h ^ size_t(v)) * 1099511628211ull;
        return h;
    }
};

// Triangle t's edge e, from vertex e to vertex (e + 1) % 3; `reversed` when
// its start is the key's high point.
struct EdgeUse
{
    int32_t triangle;
    int32_t edge;
    bool reversed;
};

bool isFinite(const MeshVertex& v)
{
    for (int k = 0; k < 3; ++k)
        if (!std::isfinite(v.vertex[k]) || !std::isfinite(v.texCoord[k]))
            return false;
    return true;
}

bool sameUv(const float* a, const float* b)
{
    return std::abs(a[0] - b[0]) < 1e-6f && std::abs(a[1] - b[1]) < 1e-6f;
}

int32_t findRoot(std::vector<int32_t>& parent, int32_t i)
{
    while (parent[i] != i) {
        parent[i] = parent[parent[i]];
        i = parent[i];
    }
    return i;
}

void copy2(float* out, const float* in)
{
    out[0] = in[0];
    out[1] = in[1];
}

} // namespace

UvSeamSet findUvSeams(const std::vector<MeshVertex>& vertices)
{
    UvSeamSet result;
    const int32_t triangleCount = int32_t(vertices.size() / 3);

    std::unordered_map<EdgeKey, std::vector<EdgeUse>, EdgeKeyHash> edges;
    edges.reserve(size_t(triangleCount) * 3);
    for (int32_t t = 0; t < triangleCount; ++t) {
        const MeshVertex* v = &vertices[size_t(t) * 3];
        if (!isFinite(v[0]) || !isFinite(v[1]) || !isFinite(v[2]))
            continue;
        for (int32_t e = 0; e < 3; ++e) {
            const PointKey start = pointKey(v[e].vertex), end = pointKey(v[(e + 1) % 3].vertex);
            if (start == end)
                continue;
            const bool reversed = end < start;
            edges[reversed ? EdgeKey{end, start} : EdgeKey{start, end}].push_back({t, e, reversed});
        }
    }

    // The UV coordinates of an edge use, from the key's low point to its high one.
    auto uvEnds = [&](const EdgeUse& use, const float*& low, const float*& high) {
        const MeshVertex* v = &vertices[size_t(use.triangle) * 3];
        const float* start = v[use.edge].texCoord;
        const float* end = v[(use.edge + 1) % 3].texCoord;
        low = use.reversed ? end : start;
        high = use.reversed ? start : end;
    };

    // Islands: triangles joined across edges whose UVs agree.
    std::vector<int32_t> parent(static_cast<size_t>(triangleCount));
    std::iota(parent.begin(), parent.end(), 0);
    std::vector<std::pair<EdgeUse, EdgeUse>> seamUses;
    for (const auto& entry : edges) {
        const std::vector<EdgeUse>& uses = entry.second;
        // A fan of many triangles on one edge is no UV seam worth pairing up.
        const bool pairSeams = uses.size() <= maxUsesPerSeamEdge;
        for (size_t i = 0; i < uses.size(); ++i)
            for (size_t j = i + 1; j < uses.size(); ++j) {
                const float *aLow, *aHigh, *bLow, *bHigh;
                uvEnds(uses[i], aLow, aHigh);
                uvEnds(uses[j], bLow, bHigh);
                if (sameUv(aLow, bLow) && sameUv(aHigh, bHigh))
                    parent[findRoot(parent, uses[i].triangle)] = findRoot(parent, uses[j].triangle);
                else if (pairSeams)
                    seamUses.push_back({uses[i], uses[j]});
            }
    }

    result.triangleIsland.assign(size_t(triangleCount), -1);
    std::vector<int32_t> islandOfRoot(static_cast<size_t>(triangleCount), -1);
    for (int32_t t = 0; t < triangleCount; ++t) {
        int32_t& island = islandOfRoot[findRoot(parent, t)];
        if (island < 0)
            island = result.islandCount++;
        result.triangleIsland[t] = island;
    }

    result.seams.reserve(seamUses.size());
    for (const auto& pair : seamUses) {
        UvSeam seam;
        const float *aLow, *aHigh, *bLow, *bHigh;
        uvEnds(pair.first, aLow, aHigh);
        uvEnds(pair.second, bLow, bHigh);
        copy2(seam.a0, aLow);
        copy2(seam.a1, aHigh);
        copy2(seam.b0, bLow);
        copy2(seam.b1, bHigh);
        copy2(seam.aInner, vertices[size_t(pair.first.triangle) * 3 + (pair.first.edge + 2) % 3].texCoord);
        copy2(seam.bInner, vertices[size_t(pair.second.triangle) * 3 + (pair.second.edge + 2) % 3].texCoord);
        seam.islandA = result.triangleIsland[pair.first.triangle];
        seam.islandB = result.triangleIsland[pair.second.triangle];
        result.seams.push_back(seam);
    }
    return result;
}
