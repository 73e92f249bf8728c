#include "Patch.h"

#include "LayeredImage.h"
#include "PatchSource.h"

#include <omp.h>

#include <algorithm>

namespace Velmor {

// Everything one row of one layer needs, gathered once per row.
struct RowContext
{
    const LayerView* source;
    const LayerView* target;
    const PatchSource* candidate;
    const float* sourceRow;       // whole-pixel placements only
    const int32_t* sourceColumns; // whole-pixel placements only
    const float* targetRow;
    const int32_t* targetColumns;
    int32_t dy;
};

namespace {

// Pixel-layers one patch operation must touch before a thread team pays for
// waking and joining: tiny patches run on one thread, while a default patch
// (140 x 140 pixels, 3 layers) gains about 1.8 times on two idle cores.
constexpr int64_t minParallelWork = int64_t(1) << 12;

// One candidate pixel of one layer at offset (dx, dy). A whole-pixel
// placement reads the pixel: its bilinear weights are 0, which leaves the
// pixel itself (a Normal normalised once per lerp stage, as the sampler does).
template <PixelFormat F, bool Identity>
inline void readSource(const LayerView& layer, const PatchSource& candidate, const float* sourceRow,
                       const int32_t* sourceColumns, int32_t dx, int32_t dy, float* out)
{
    if constexpr (Identity) {
        const float* p = sourceRow + int64_t(layer.channels) * sourceColumns[dx];
        if constexpr (F == Normal) {
            normalise(p, out);
            normalise(out, out);
        } else {
            for (int c = 0; c < int(channelCount(F)); ++c)
                out[c] = p[c];
        }
    } else {
        float X;
        float Y;
        candidate.sourcePosition(dx, dy, X, Y);
        sampleLinear<F>(layer, X, Y, out);
        if constexpr (F == Normal) {
            const float nx = out[0];
            const float ny = out[1];
            out[0] = nx * candidate.dirY + ny * candidate.dirX;
            out[1] = ny * candidate.dirY - nx * candidate.dirX;
        }
    }
}

template <PixelFormat F, bool Identity>
void addRowErrors(const RowContext& row, const uint8_t* filledRow, int32_t begin, int32_t end, float* errors)
{
    float s[4];
    for (int32_t dx = begin; dx < end; ++dx) {
        const int32_t tx = row.targetColumns[dx];
        if (!filledRow[tx])
            continue;
        readSource<F, Identity>(*row.source, *row.candidate, row.sourceRow, row.sourceColumns, dx, row.dy, s);
        errors[dx] += pixelDifferenceOf<F>(s, row.targetRow + int64_t(row.target->channels) * tx);
    }
}

template <bool Identity>
void addRowErrorsOf(const RowContext& row, const uint8_t* filledRow, int32_t begin, int32_t end, float* errors)
{
    switch (row.source->format) {
    case Gray: addRowErrors<Gray, Identity>(row, filledRow, begin, end, errors); break;
    case RGB: addRowErrors<RGB, Identity>(row, filledRow, begin, end, errors); break;
    case RGBA: addRowErrors<RGBA, Identity>(row, filledRow, begin, end, errors); break;
    case Normal: addRowErrors<Normal, Identity>(row, filledRow, begin, end, errors); break;
    default: break;
    }
}

template <PixelFormat F, bool Identity>
void writeRow(const RowContext& row, const float* weights, int32_t fullSize)
{
    constexpr int n = int(channelCount(F));
    float* targetRow = const_cast<float*>(row.targetRow);
    float s[4];
    for (int32_t dx = 0; dx < fullSize; ++dx) {
        const float w = weights[dx];
        if (w < 0.0f)
            continue;
        readSource<F, Identity>(*row.source, *row.candidate, row.sourceRow, row.sourceColumns, dx, row.dy, s);
        float* t = targetRow + int64_t(n) * row.targetColumns[dx];
        if (w < 1.0f)
            lerpValues<F>(t, s, w, t);
        else
            for (int c = 0; c < n; ++c)
                t[c] = s[c];
    }
}

template <bool Identity>
void writeRowOf(const RowContext& row, const float* weights, int32_t fullSize)
{
    switch (row.source->format) {
    case Gray: writeRow<Gray, Identity>(row, weights, fullSize); break;
    case RGB: writeRow<RGB, Identity>(row, weights, fullSize); break;
    case RGBA: writeRow<RGBA, Identity>(row, weights, fullSize); break;
    case Normal: writeRow<Normal, Identity>(row, weights, fullSize); break;
    default: break;
    }
}

} // namespace

Patch::~Patch()
{
    delete bestSource;
}

void Patch::init(LayeredImage* targetImage, int32_t size, int32_t boundary)
{
    target = targetImage;
    patchSize = size;
    patchBoundary = boundary;
    // A new run starts from no best candidate: one left over from an earlier
    // run (cancelled between evaluate and paste) belongs to another target
    // and must not be pasted into this one. This is deliberate and stays.
    discardBest();
    teamSize = std::max(1, std::min(16, omp_get_max_threads()));
    boundSource = nullptr;
    targetLayers.clear();
    targetWidth = targetHeight = 0;
    if (target) {
        for (const Image* layer : target->layers)
            targetLayers.push_back(layer ? LayerView::of(*layer) : LayerView());
        if (!targetLayers.empty()) {
            targetWidth = targetLayers[0].width;
            targetHeight = targetLayers[0].height;
        }
    }
    const int32_t F = std::max(0, fullSize());
    errorScratch.assign(size_t(F) * F, 0.0f);
    rowWeights.assign(size_t(F) * F, 0.0f);
    recordedErrors = errorScratch.data();
    rowSums.assign(F, 0.0f);
    rowCounts.assign(F, 0);
    targetColumns.assign(F, 0);
    sourceColumns.assign(size_t(F) * targetLayers.size(), 0);
}

void Patch::bindSource(const LayeredImage& source)
{
    if (boundSource == &source)
        return;
    boundSource = &source;
    sourceLayers.clear();
    for (const Image* layer : source.layers)
        sourceLayers.push_back(layer ? LayerView::of(*layer) : LayerView());
}

void Patch::prepareColumns(const PatchSource& candidate, bool identity, int layerCount)
{
    const int32_t F = fullSize();
    for (int32_t dx = 0; dx < F; ++dx)
        targetColumns[dx] = foldRepeat(x + dx, targetWidth);
    if (!identity)
        return;
    for (int l = 0; l < layerCount; ++l)
        for (int32_t dx = 0; dx < F; ++dx)
            sourceColumns[size_t(l) * F + dx] = sourceLayers[l].foldX(candidate.sx + dx);
}

// Number of layers both images can take part with: present, non-empty, and
// of one format in source and target.
static int usableLayers(const std::vector<LayerView>& source, const std::vector<LayerView>& target)
{
    const size_t n = std::min(source.size(), target.size());
    for (size_t l = 0; l < n; ++l)
        if (!source[l].data || !target[l].data || source[l].format != target[l].format
            || target[l].width != target[0].width || target[l].height != target[0].height)
            return int(l);
    return int(n);
}

float Patch::evaluate(const PatchSource& candidate, const uint8_t* filledMask, bool useAllLayers)
{
    const int32_t F = fullSize();
    if (!target || !candidate.source || !filledMask || F <= 0 || size_t(F) * F != errorScratch.size()
        || targetWidth <= 0 || targetHeight <= 0)
        return 0.0f;
    bindSource(*candidate.source);
    const int usable = usableLayers(sourceLayers, targetLayers);
    const int layerCount = useAllLayers ? usable : std::min(usable, 1);
    const bool identity = candidate.isIdentity();
    prepareColumns(candidate, identity, layerCount);

    const int32_t B = patchBoundary;
    const int32_t P = patchSize;
#pragma omp parallel for num_threads(teamFor(layerCount)) schedule(static)
    for (int32_t dy = 0; dy < F; ++dy) {
        float* errors = recordedErrors + int64_t(dy) * F;
        std::fill(errors, errors + F, 0.0f);
        const int32_t ty = foldRepeat(y + dy, targetHeight);
        const uint8_t* filledRow = filledMask + int64_t(ty) * targetWidth;
        // The core is not compared: only the ring columns of a core row.
        const bool coreRow = dy >= B && dy < P + B;
        const int32_t firstEnd = coreRow ? std::min(B, F) : F;
        const int32_t secondBegin = coreRow ? P + B : F;
        for (int l = 0; l < layerCount; ++l) {
            const RowContext row = rowContext(l, candidate, identity, ty, dy);
            if (identity) {
                addRowErrorsOf<true>(row, filledRow, 0, firstEnd, errors);
                addRowErrorsOf<true>(row, filledRow, secondBegin, F, errors);
            } else {
                addRowErrorsOf<false>(row, filledRow, 0, firstEnd, errors);
                addRowErrorsOf<false>(row, filledRow, secondBegin, F, errors);
            }
        }
        // One partial sum per row, added below in row order, so the result
        // does not depend on the number of threads.
        float sum = 0.0f;
        int64_t count = 0;
        for (int32_t dx = 0; dx < F; ++dx) {
            if ((dx < firstEnd || dx >= secondBegin) && filledRow[targetColumns[dx]]) {
                sum += errors[dx];
                ++count;
            }
        }
        rowSums[dy] = sum;
        rowCounts[dy] = count;
    }
    float sum = 0.0f;
    int64_t count = 0;
    for (int32_t dy = 0; dy < F; ++dy) {
        sum += rowSums[dy];
        count += rowCounts[dy];
    }
    const float error = count >= 1 ? sum / float(count) : sum;
    if (bestError > error) {
        bestError = error;
        delete bestSource;
        bestSource = candidate.clone();
        onBetterCandidate();
    }
    return error;
}

RowContext Patch::rowContext(int layer, const PatchSource& candidate, bool identity, int32_t ty,
                                    int32_t dy) const
{
    const LayerView& source = sourceLayers[layer];
    RowContext row{&source, &targetLayers[layer], &candidate, nullptr, nullptr,
                   targetLayers[layer].row(ty), targetColumns.data(), dy};
    if (identity) {
        row.sourceRow = source.row(source.foldY(candidate.sy + dy));
        row.sourceColumns = sourceColumns.data() + size_t(layer) * fullSize();
    }
    return row;
}

int Patch::teamFor(int layerCount) const
{
    const int64_t F = fullSize();
    return F * F * layerCount >= minParallelWork ? teamSize : 1;
}

int Patch::pasteTeamSize(int layerCount) const
{
    // A patch wider or taller than the target folds onto itself; writing it
    // from one thread keeps the result defined and race-free.
    const int32_t F = fullSize();
    return (F > targetWidth || F > targetHeight) ? 1 : teamFor(layerCount);
}

void Patch::pasteWeighted(const float* weights, bool skipUnfilledRing, uint8_t* filledMask, const Image* writeMask)
{
    const int32_t F = fullSize();
    if (!bestSource || !bestSource->source || !filledMask || F <= 0 || size_t(F) * F != rowWeights.size()
        || targetWidth <= 0 || targetHeight <= 0)
        return;
    bindSource(*bestSource->source);
    const PatchSource& candidate = *bestSource;
    const int layerCount = usableLayers(sourceLayers, targetLayers);
    const bool identity = candidate.isIdentity();
    prepareColumns(candidate, identity, layerCount);
    if (writeMask && writeMask->isEmpty())
        writeMask = nullptr;
    const float maskWidth = writeMask ? float(writeMask->width) : 0.0f;
    const float maskHeight = writeMask ? float(writeMask->height) : 0.0f;

#pragma omp parallel for num_threads(pasteTeamSize(layerCount)) schedule(static)
    for (int32_t dy = 0; dy < F; ++dy) {
        const int32_t ty = foldRepeat(y + dy, targetHeight);
        uint8_t* filledRow = filledMask + int64_t(ty) * targetWidth;
        // Decide every pixel of the row first: skip, copy or cross-fade.
        float* rowWeight = rowWeights.data() + int64_t(dy) * F;
        const float* base = weights + int64_t(dy) * F;
        Pixel maskValue(writeMask ? writeMask->format : Gray);
        for (int32_t dx = 0; dx < F; ++dx) {
            float w = base[dx];
            const int32_t tx = targetColumns[dx];
            if (w >= 0.0f && writeMask) {
                writeMask->sample(float(tx) / float(targetWidth) * maskWidth,
                                  float(ty) / float(targetHeight) * maskHeight, Linear, maskValue);
                if (!(maskValue[0] > 0.5f))
                    w = -1.0f;
            }
            if (skipUnfilledRing && w >= 0.0f && w < 1.0f && !filledRow[tx])
                w = -1.0f;
            rowWeight[dx] = w;
        }
        for (int l = 0; l < layerCount; ++l) {
            const RowContext row = rowContext(l, candidate, identity, ty, dy);
            if (identity) {
                writeRowOf<true>(row, rowWeight, F);
            } else {
                writeRowOf<false>(row, rowWeight, F);
            }
        }
        for (int32_t dx = 0; dx < F; ++dx)
            if (rowWeight[dx] >= 0.0f)
                filledRow[targetColumns[dx]] = 1;
    }
    discardBest();
}

void Patch::discardBest()
{
    delete bestSource;
    bestSource = nullptr;
    bestError = FLT_MAX;
}

} // namespace Velmor
