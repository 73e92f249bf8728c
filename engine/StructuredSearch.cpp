#include "StructuredSearch.h"

#include "LayeredImage.h"


#include <algorithm>
#include <cmath>
#include <numeric>

namespace Velmor {

namespace {

// Lattice positions the whole-source search compares per destination: about
// a millisecond of sparse comparisons for a default patch.
constexpr int64_t maxLatticePositions = 1024;
// Channel comparisons of one whole-source search below which it runs on
// the calling thread.
constexpr int64_t minParallelComparisons = int64_t(1) << 18;

float differenceOf(PixelFormat format, const float* a, const float* b)
{
    switch (format) {
    case Gray: return pixelDifferenceOf<Gray>(a, b);
    case RGB: return pixelDifferenceOf<RGB>(a, b);
    case RGBA: return pixelDifferenceOf<RGBA>(a, b);
    case Normal: return pixelDifferenceOf<Normal>(a, b);
    default: return 0.0f;
    }
}

// Mean difference between pixels (x, y) and (x + dx, y + dy) over the
// layer's first `width` x `height` pixels, both inside. At most 512 evenly
// spaced rows are visited, so that a huge source costs no more than a
// large one.
double meanDifference(const LayerView& layer, int32_t width, int32_t height, int32_t dx, int32_t dy)
{
    double sum = 0.0;
    int64_t count = 0;
    const int32_t rowStep = std::max(1, height / 512);
    for (int32_t y = 0; y + dy < height; y += rowStep)
        for (int32_t x = 0; x + dx < width; ++x) {
            sum += differenceOf(layer.format, layer.at(x, y), layer.at(x + dx, y + dy));
            ++count;
        }
    return count > 0 ? sum / double(count) : 0.0;
}

// Whether the first column (or row) goes on from the last one the way the
// texture goes on elsewhere. Either the wrap-around pair differs no more
// than neighbouring lines do, or, for regular textures whose seam may look
// like one of their edges, the lines that follow the block most like the
// last lines look like the first lines.
bool edgeContinues(const LayerView& layer, int32_t width, int32_t height, bool columns)
{
    const int32_t n = columns ? width : height;
    const int32_t across = columns ? height : width;
    // At most 64 evenly spaced pixels of each line are compared.
    const int32_t samples = std::min(across, 64);
    const auto lineDifference = [&](int32_t a, int32_t b) {
        double sum = 0.0;
        for (int32_t k = 0; k < samples; ++k) {
            const int32_t j = int32_t(int64_t(k) * across / samples);
            const float* pa = columns ? layer.at(a, j) : layer.at(j, a);
            const float* pb = columns ? layer.at(b, j) : layer.at(j, b);
            sum += differenceOf(layer.format, pa, pb);
        }
        return sum / double(samples);
    };
    // Lines a - k + 1 .. a against lines b - k + 1 .. b: blocks of a
    // quarter of the source, so that they hold some of its features.
    const int32_t k = std::min(128, n / 4);
    const auto blockDifference = [&](int32_t a, int32_t b) {
        double sum = 0.0;
        for (int32_t i = 0; i < k; ++i)
            sum += lineDifference(a - i, b - i);
        return sum / double(k);
    };
    if (n < 3)
        return false;
    double neighbours = 0.0;
    for (int32_t a = 0; a + 1 < n; ++a)
        neighbours += lineDifference(a, a + 1);
    neighbours /= double(n - 1);
    const double limit = 1.5 * neighbours;
    if (lineDifference(n - 1, 0) <= limit)
        return true;
    if (k < 1)
        return false;
    int32_t likest = -1;
    double likestDifference = INFINITY;
    for (int32_t a = k - 1; a + k < n; ++a) {
        const double d = blockDifference(a, n - 1);
        if (d < likestDifference) {
            likestDifference = d;
            likest = a;
        }
    }
    return likest >= 0 && blockDifference(k - 1, likest + k) <= limit;
}

bool usableLayer(const Image* layer, int32_t width, int32_t height)
{
    return layer && !layer->isEmpty() && int32_t(layer->width) >= width && int32_t(layer->height) >= height
        && layer->channels() > 0 && width > 1 && height > 1;
}

template <PixelFormat F>
float layerError(const LayerView& layer, const std::pair<int32_t, int32_t>* offsets, const float* values, int count,
                 int32_t sx, int32_t sy, bool identity, float dirX, float dirY, float scale, int32_t halfSize)
{
    constexpr int n = int(channelCount(F));
    float sum = 0.0f;
    float s[4];
    const float cx = float(sx + halfSize);
    const float cy = float(sy + halfSize);
    for (int i = 0; i < count; ++i) {
        const float* t = values + int64_t(n) * i;
        if (identity) {
            sum += pixelDifferenceOf<F>(layer.at(sx + offsets[i].first, sy + offsets[i].second), t);
            continue;
        }
        const float u = float(sx + offsets[i].first) - cx;
        const float v = float(sy + offsets[i].second) - cy;
        sampleLinear<F>(layer, cx + scale * (dirY * u - dirX * v), cy + scale * (dirX * u + dirY * v), s);
        if constexpr (F == Normal) {
            const float nx = s[0];
            const float ny = s[1];
            s[0] = nx * dirY + ny * dirX;
            s[1] = ny * dirY - nx * dirX;
        }
        sum += pixelDifferenceOf<F>(s, t);
    }
    return sum;
}

} // namespace

void continuePlacement(const Placement& neighbour, int32_t stepX, int32_t stepY, int32_t& sx, int32_t& sy)
{
    // The neighbour maps target offset (u, v) from its centre to source
    // offset scale * (dirY u - dirX v, dirX u + dirY v).
    const float u = float(stepX);
    const float v = float(stepY);
    const float ox = neighbour.scale * (neighbour.dirY * u - neighbour.dirX * v);
    const float oy = neighbour.scale * (neighbour.dirX * u + neighbour.dirY * v);
    sx = neighbour.sx + int32_t(std::lround(ox));
    sy = neighbour.sy + int32_t(std::lround(oy));
}

bool sourceTiles(const LayeredImage& source, int32_t width, int32_t height)
{
    if (source.layerCount() == 0 || !usableLayer(source.layers[0], width, height))
        return false;
    const LayerView layer = LayerView::of(*source.layers[0]);
    return edgeContinues(layer, width, height, true) && edgeContinues(layer, width, height, false);
}

double neighbourDifference(const LayeredImage& source, int32_t width, int32_t height, bool useAllLayers,
                           int32_t distance)
{
    const size_t compared = useAllLayers ? source.layerCount() : std::min<size_t>(1, source.layerCount());
    double sum = 0.0;
    for (size_t l = 0; l < compared; ++l) {
        if (!usableLayer(source.layers[l], width, height))
            continue;
        const LayerView layer = LayerView::of(*source.layers[l]);
        sum += 0.5
            * (meanDifference(layer, width, height, distance, 0) + meanDifference(layer, width, height, 0, distance));
    }
    return sum;
}

void StructuredSearch::init(const LayeredImage& source, const LayeredImage& target, int32_t sourceWidth,
                            int32_t sourceHeight, int32_t size, int32_t ring, bool useAllLayers, bool wraps,
                            int keepCount, bool guided)
{
    width = std::max(1, sourceWidth);
    height = std::max(1, sourceHeight);
    patchSize = size;
    boundary = ring;
    fullSize = size + 2 * ring;
    halfSize = fullSize / 2;
    tiles = wraps;
    keep = std::max(1, keepCount);
    const size_t layers = std::min(source.layerCount(), target.layerCount());
    const size_t compared = useAllLayers ? layers : std::min<size_t>(1, layers);
    sourceLayers.clear();
    targetLayers.clear();
    layerStart.clear();
    channelSum = 0;
    for (size_t l = 0; l < compared; ++l) {
        const Image* in = source.layers[l];
        const Image* out = target.layers[l];
        if (!in || !out || in->isEmpty() || out->isEmpty() || in->format != out->format)
            break;
        sourceLayers.push_back(LayerView::of(*in));
        targetLayers.push_back(LayerView::of(*out));
        layerStart.push_back(size_t(channelSum));
        channelSum += int(in->channels());
    }
    if (!targetLayers.empty()) {
        targetWidth = targetLayers[0].width;
        targetHeight = targetLayers[0].height;
    }

    sampleStep = std::max(1, guided ? boundary / 2 : boundary / 4);
    const int64_t perSide = (int64_t(fullSize) + sampleStep - 1) / sampleStep;
    sampleOffsets.assign(size_t(perSide * perSide), {0, 0});
    sampleValues.assign(size_t(perSide * perSide * channelSum), 0.0f);
    for (size_t l = 0; l < layerStart.size(); ++l)
        layerStart[l] *= size_t(perSide * perSide);

    const int64_t rangeX = tiles ? width : std::max(1, width - fullSize + 1);
    const int64_t rangeY = tiles ? height : std::max(1, height - fullSize + 1);
    const double budget = double(guided ? maxLatticePositions / 4 : maxLatticePositions);
    stride = int32_t(std::max<double>(1.0, std::ceil(std::sqrt(double(rangeX * rangeY) / budget))));
    const int64_t latticeCount = (rangeX / stride + 1) * (rangeY / stride + 1);
    lattice.assign(size_t(latticeCount), Position{0, 0});
    latticeErrors.assign(size_t(latticeCount), 0.0f);
    order.assign(size_t(latticeCount), 0);

    // A run of n continuations copies n + 1 patch cores side by side from
    // the source; it must stay clearly shorter than the source.
    const auto longestRun = [&](int32_t side) {
        return std::max(0, (side - fullSize) / std::max(1, patchSize));
    };
    maxRunX = longestRun(width);
    maxRunY = longestRun(height);
    placed.clear();
}

void StructuredSearch::beginPosition(int32_t x, int32_t y)
{
    bannedCount = 0;
    const int32_t steps[2][2] = {{-patchSize, 0}, {0, -patchSize}};
    for (int s = 0; s < 2; ++s) {
        const Placement* neighbour = placedAt(x + steps[s][0], y + steps[s][1]);
        if (!neighbour || (s == 0 ? neighbour->runX < maxRunX : neighbour->runY < maxRunY))
            continue;
        Position p{0, 0};
        continuePlacement(*neighbour, -steps[s][0], -steps[s][1], p.sx, p.sy);
        if (tiles) {
            p.sx = foldRepeat(p.sx, width);
            p.sy = foldRepeat(p.sy, height);
        }
        banned[bannedCount++] = p;
    }
}

bool StructuredSearch::usable(int32_t& sx, int32_t& sy) const
{
    if (tiles) {
        sx = foldRepeat(sx, width);
        sy = foldRepeat(sy, height);
    } else {
        const int32_t lastX = std::max(0, width - fullSize);
        const int32_t lastY = std::max(0, height - fullSize);
        if (sx < 0 || sy < 0 || sx > lastX || sy > lastY)
            return false;
    }
    // Distance along one axis, the short way round on a tiling source.
    const auto distance = [&](int32_t a, int32_t b, int32_t n) {
        const int32_t d = std::abs(a - b);
        return tiles ? std::min(d, n - d) : d;
    };
    const int32_t radius = std::max(1, patchSize / 2);
    for (int i = 0; i < bannedCount; ++i)
        if (distance(sx, banned[i].sx, width) < radius && distance(sy, banned[i].sy, height) < radius)
            return false;
    return true;
}

const Placement* StructuredSearch::placedAt(int32_t x, int32_t y) const
{
    if (targetWidth < 1 || targetHeight < 1)
        return nullptr;
    const auto found = placed.find({key(x, targetWidth), key(y, targetHeight)});
    return found == placed.end() ? nullptr : &found->second;
}

void StructuredSearch::record(int32_t x, int32_t y, const Placement& placement)
{
    if (targetWidth < 1 || targetHeight < 1)
        return;
    placed[{key(x, targetWidth), key(y, targetHeight)}] = placement;
}

int StructuredSearch::continuations(int32_t x, int32_t y, Position* out, int* side) const
{
    const int32_t steps[maxContinuations][2] = {{-patchSize, 0}, {0, -patchSize}, {patchSize, 0}, {0, patchSize}};
    int count = 0;
    for (int s = 0; s < maxContinuations; ++s) {
        const Placement* neighbour = placedAt(x + steps[s][0], y + steps[s][1]);
        if (!neighbour)
            continue;
        const bool horizontal = steps[s][1] == 0;
        if ((horizontal && neighbour->runX >= maxRunX) || (!horizontal && neighbour->runY >= maxRunY))
            continue;
        // The new patch lies minus the step from its neighbour.
        Position p{0, 0};
        continuePlacement(*neighbour, -steps[s][0], -steps[s][1], p.sx, p.sy);
        if (!usable(p.sx, p.sy))
            continue;
        out[count] = p;
        side[count] = s;
        ++count;
    }
    return count;
}

float StructuredSearch::sparseError(int32_t sx, int32_t sy, float dirX, float dirY, float scale) const
{
    const bool identity = dirX == 0.0f && dirY == 1.0f && scale == 1.0f;
    float sum = 0.0f;
    for (size_t l = 0; l < sourceLayers.size(); ++l) {
        const LayerView& layer = sourceLayers[l];
        const float* values = sampleValues.data() + layerStart[l];
        const auto* offsets = sampleOffsets.data();
        switch (layer.format) {
        case Gray:
            sum += layerError<Gray>(layer, offsets, values, sampleCount, sx, sy, identity, dirX, dirY, scale, halfSize);
            break;
        case RGB:
            sum += layerError<RGB>(layer, offsets, values, sampleCount, sx, sy, identity, dirX, dirY, scale, halfSize);
            break;
        case RGBA:
            sum += layerError<RGBA>(layer, offsets, values, sampleCount, sx, sy, identity, dirX, dirY, scale, halfSize);
            break;
        case Normal:
            sum += layerError<Normal>(layer, offsets, values, sampleCount, sx, sy, identity, dirX, dirY, scale,
                                      halfSize);
            break;
        default: break;
        }
    }
    // NaN compares as the worst error.
    return std::isnan(sum) ? INFINITY : sum;
}

int StructuredSearch::coarseSearch(int32_t x, int32_t y, const uint8_t* filledMask, float dirX, float dirY,
                                   float scale, RandomGenerator& random, Position* out)
{
    if (targetLayers.empty())
        return 0;
    // Gather the filled ring pixels on a sparse grid.
    sampleCount = 0;
    const int64_t capacity = int64_t(sampleOffsets.size());
    for (int32_t dy = 0; dy < fullSize; dy += sampleStep) {
        const int32_t ty = foldRepeat(y + dy, targetHeight);
        const bool coreRow = dy >= boundary && dy < patchSize + boundary;
        for (int32_t dx = 0; dx < fullSize && sampleCount < capacity; dx += sampleStep) {
            if (coreRow && dx >= boundary && dx < patchSize + boundary)
                continue;
            const int32_t tx = foldRepeat(x + dx, targetWidth);
            if (!filledMask[int64_t(ty) * targetWidth + tx])
                continue;
            sampleOffsets[size_t(sampleCount)] = {dx, dy};
            for (size_t l = 0; l < targetLayers.size(); ++l) {
                const LayerView& layer = targetLayers[l];
                const float* p = layer.at(tx, ty);
                std::copy_n(p, layer.channels,
                            sampleValues.data() + layerStart[l] + size_t(sampleCount) * size_t(layer.channels));
            }
            ++sampleCount;
        }
    }
    if (sampleCount == 0)
        return 0;

    // Lattice over the usable positions with a random origin.
    const int32_t rangeX = tiles ? width : std::max(1, width - fullSize + 1);
    const int32_t rangeY = tiles ? height : std::max(1, height - fullSize + 1);
    const int32_t ox = random.next() % std::min(stride, rangeX);
    const int32_t oy = random.next() % std::min(stride, rangeY);
    int count = 0;
    for (int32_t py = oy; py < rangeY; py += stride)
        for (int32_t px = ox; px < rangeX && count < int(lattice.size()); px += stride) {
            Position p{px, py};
            if (usable(p.sx, p.sy))
                lattice[size_t(count++)] = p;
        }

    // A thread team pays only for enough comparisons; interpolated reads
    // weigh about eight whole-pixel ones.
    const bool identity = dirX == 0.0f && dirY == 1.0f && scale == 1.0f;
    const int64_t work = int64_t(count) * sampleCount * channelSum * (identity ? 1 : 8);
#pragma omp parallel for schedule(static) if (work >= minParallelComparisons)
    for (int i = 0; i < count; ++i)
        latticeErrors[size_t(i)] = sparseError(lattice[size_t(i)].sx, lattice[size_t(i)].sy, dirX, dirY, scale);

    std::iota(order.begin(), order.begin() + count, 0);
    const int kept = std::min(keep, count);
    std::partial_sort(order.begin(), order.begin() + kept, order.begin() + count, [&](int a, int b) {
        const float ea = latticeErrors[size_t(a)];
        const float eb = latticeErrors[size_t(b)];
        return ea < eb || (ea == eb && a < b);
    });

    // Move each kept position downhill, halving the step down to a pixel.
    int results = 0;
    for (int k = 0; k < kept; ++k) {
        Position best = lattice[size_t(order[size_t(k)])];
        float bestError = latticeErrors[size_t(order[size_t(k)])];
        for (int32_t step = stride / 2; step >= 1; step /= 2) {
            const Position centre = best;
            for (int32_t oyStep = -1; oyStep <= 1; ++oyStep)
                for (int32_t oxStep = -1; oxStep <= 1; ++oxStep) {
                    if (oxStep == 0 && oyStep == 0)
                        continue;
                    Position p{centre.sx + oxStep * step, centre.sy + oyStep * step};
                    if (!usable(p.sx, p.sy))
                        continue;
                    const float e = sparseError(p.sx, p.sy, dirX, dirY, scale);
                    if (e < bestError) {
                        bestError = e;
                        best = p;
                    }
                }
        }
        bool duplicate = false;
        for (int r = 0; r < results; ++r)
            duplicate = duplicate || (out[r].sx == best.sx && out[r].sy == best.sy);
        if (!duplicate)
            out[results++] = best;
    }
    return results;
}

} // namespace Velmor
