#include "Patch.h"

#include "Check.h"
#include "LayeredImage.h"
#include "PatchSource.h"

#include <omp.h>

#include <algorithm>
#include <cmath>

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
    bool unfolded;    // whole-pixel placement whose source and target columns both run without a fold
    bool unitNormals; // sourceRow holds Normal pixels already normalised as whole-pixel reads leave them
};

namespace {

// Pixel-layers one patch operation must touch before a thread team pays for
// waking and joining: tiny patches run on one thread, while a default patch
// (140 x 140 pixels, 3 layers) gains about 1.8 times on two idle cores.
constexpr int64_t minParallelWork = int64_t(1) << 12;
// Floats of a Normal source layer kept normalised for whole-pixel reads (256 MB).
constexpr int64_t maxNormalisedFloats = int64_t(1) << 26;
// Floats of per-candidate ring errors a batch may hold (16 MB).
constexpr int64_t maxBatchFloats = int64_t(1) << 22;

// One candidate pixel of one layer at offset (dx, dy). A whole-pixel
// placement reads the pixel: its bilinear weights are 0, which leaves the
// pixel itself (a Normal normalised once per lerp stage, as the sampler does).
template <PixelFormat F, bool Identity, bool Unit = false>
inline void readSource(const LayerView& layer, const PatchSource& candidate, const float* sourceRow,
                       const int32_t* sourceColumns, int32_t dx, int32_t dy, float* out)
{
    if constexpr (Identity) {
        const float* p = sourceRow + int64_t(layer.channels) * sourceColumns[dx];
        if constexpr (F == Normal && !Unit) {
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

// Whole-pixel errors of a row whose source and target columns both run
// without a fold, one run of filled pixels at a time: inside a run the loop
// has no branch, so the compiler can vectorise it. Same errors as the loop
// below.
template <PixelFormat F, bool Unit>
void addUnfoldedRowErrors(const RowContext& row, const uint8_t* filledRow, int32_t begin, int32_t end, float* errors)
{
    constexpr int n = int(channelCount(F));
    const int32_t t0 = row.targetColumns[0];
    const float* source = row.sourceRow + int64_t(n) * row.sourceColumns[0];
    const float* target = row.targetRow + int64_t(n) * t0;
    const uint8_t* filled = filledRow + t0;
    int32_t dx = begin;
    while (dx < end) {
        while (dx < end && !filled[dx])
            ++dx;
        int32_t runEnd = dx;
        while (runEnd < end && filled[runEnd])
            ++runEnd;
        for (int32_t i = dx; i < runEnd; ++i) {
            if constexpr (F == Normal && !Unit) {
                float s[3];
                normalise(source + int64_t(n) * i, s);
                normalise(s, s);
                errors[i] += pixelDifferenceOf<F>(s, target + int64_t(n) * i);
            } else {
                errors[i] += pixelDifferenceOf<F>(source + int64_t(n) * i, target + int64_t(n) * i);
            }
        }
        dx = runEnd;
    }
}

template <PixelFormat F, bool Identity, bool Unit = false>
void addRowErrors(const RowContext& row, const uint8_t* filledRow, int32_t begin, int32_t end, float* errors)
{
    if constexpr (Identity) {
        if (row.unfolded) {
            addUnfoldedRowErrors<F, Unit>(row, filledRow, begin, end, errors);
            return;
        }
    }
    float s[4];
    for (int32_t dx = begin; dx < end; ++dx) {
        const int32_t tx = row.targetColumns[dx];
        if (!filledRow[tx])
            continue;
        readSource<F, Identity, Unit>(*row.source, *row.candidate, row.sourceRow, row.sourceColumns, dx, row.dy, s);
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
    case Normal:
        if (row.unitNormals)
            addRowErrors<Normal, Identity, true>(row, filledRow, begin, end, errors);
        else
            addRowErrors<Normal, Identity>(row, filledRow, begin, end, errors);
        break;
    default: break;
    }
}

template <PixelFormat F, bool Identity, bool Unit = false>
void writeRow(const RowContext& row, const float* weights, int32_t fullSize)
{
    constexpr int n = int(channelCount(F));
    float* targetRow = const_cast<float*>(row.targetRow);
    float s[4];
    for (int32_t dx = 0; dx < fullSize; ++dx) {
        const float w = weights[dx];
        if (w < 0.0f)
            continue;
        readSource<F, Identity, Unit>(*row.source, *row.candidate, row.sourceRow, row.sourceColumns, dx, row.dy, s);
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
    case Normal:
        if (row.unitNormals)
            writeRow<Normal, Identity, true>(row, weights, fullSize);
        else
            writeRow<Normal, Identity>(row, weights, fullSize);
        break;
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
    targetColumns.assign(F, 0);
    scratch.assign(size_t(teamSize), RingScratch());
    for (RingScratch& s : scratch) {
        s.rowSums.assign(F, 0.0f);
        s.rowCounts.assign(F, 0);
        s.sourceColumns.assign(size_t(F) * targetLayers.size(), 0);
    }
    batchErrors.clear();
}

void Patch::bindSource(const LayeredImage& source)
{
    if (boundSource == &source)
        return;
    boundSource = &source;
    sourceLayers.clear();
    for (const Image* layer : source.layers)
        sourceLayers.push_back(layer ? LayerView::of(*layer) : LayerView());
    // A whole-pixel read normalises a Normal pixel twice, the same way for
    // every candidate: do it once per source pixel instead.
    wholePixelLayers = sourceLayers;
    unitNormals.resize(sourceLayers.size());
    for (size_t l = 0; l < sourceLayers.size(); ++l) {
        const LayerView& layer = sourceLayers[l];
        const int64_t floats = int64_t(layer.width) * layer.height * layer.channels;
        if (layer.format != Normal || !layer.data || layer.channels != 3 || floats > maxNormalisedFloats) {
            unitNormals[l].clear();
            continue;
        }
        unitNormals[l].resize(size_t(floats));
        for (int64_t i = 0; i < floats; i += 3) {
            normalise(layer.data + i, unitNormals[l].data() + i);
            normalise(unitNormals[l].data() + i, unitNormals[l].data() + i);
        }
        wholePixelLayers[l].data = unitNormals[l].data();
    }
}

bool Patch::prepare(const LayeredImage* source, const uint8_t* filledMask)
{
    const int32_t F = fullSize();
    // init and the synthesizer's settings check rule all of these out.
    if (!ONDRELS_CHECK(target && source && filledMask && F > 0 && size_t(F) * F == errorScratch.size()
                       && targetWidth > 0 && targetHeight > 0))
        return false;
    bindSource(*source);
    for (int32_t dx = 0; dx < F; ++dx)
        targetColumns[dx] = foldRepeat(x + dx, targetWidth);
    return true;
}

void Patch::prepareSourceColumns(const PatchSource& candidate, int layerCount, RingScratch& s) const
{
    if (!candidate.isIdentity())
        return;
    const int32_t F = fullSize();
    for (int l = 0; l < layerCount; ++l)
        for (int32_t dx = 0; dx < F; ++dx)
            s.sourceColumns[size_t(l) * F + dx] = sourceLayers[l].foldX(candidate.sx + dx);
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

int Patch::comparedLayers(bool useAllLayers) const
{
    const int usable = usableLayers(sourceLayers, targetLayers);
    return useAllLayers ? usable : std::min(usable, 1);
}

float Patch::evaluate(const PatchSource& candidate, const uint8_t* filledMask, bool useAllLayers)
{
    if (!prepare(candidate.source, filledMask))
        return 0.0f;
    const int layerCount = comparedLayers(useAllLayers);
    RingScratch& s = scratch[0];
    float error = 0.0f;
    if (earlyExit && bestError < FLT_MAX) {
        // One thread, row by row, so that a beaten candidate stops early.
        const std::atomic<float> beaten{bestError};
        bool complete = true;
        error = ringError(candidate, filledMask, layerCount, filledRingPixels(filledMask), &beaten, s,
                          recordedErrors, complete);
    } else {
        prepareSourceColumns(candidate, layerCount, s);
        const bool identity = candidate.isIdentity();
        const int32_t F = fullSize();
#pragma omp parallel for num_threads(teamFor(layerCount)) schedule(static)
        for (int32_t dy = 0; dy < F; ++dy)
            ringRow(dy, candidate, filledMask, layerCount, identity, s, recordedErrors);
        // The row sums are added in row order, so the result does not depend
        // on the number of threads.
        float sum = 0.0f;
        int64_t count = 0;
        for (int32_t dy = 0; dy < F; ++dy) {
            sum += s.rowSums[dy];
            count += s.rowCounts[dy];
        }
        error = count >= 1 ? sum / float(count) : sum;
    }
    if (bestError > error) {
        bestError = error;
        delete bestSource;
        bestSource = candidate.clone();
        onBetterCandidate();
    }
    return error;
}

int Patch::batchTeamSize(bool useAllLayers) const
{
    const int64_t F = fullSize();
    const int64_t layers = useAllLayers ? int64_t(targetLayers.size()) : 1;
    // The batch's own errors are kept per candidate: bound them for huge patches.
    const bool fits = F * F * teamSize <= maxBatchFloats;
    return fits && F * F * layers * teamSize >= minParallelWork ? teamSize : 1;
}

void Patch::evaluateBatch(const PatchSource* candidates, int count, const uint8_t* filledMask, bool useAllLayers,
                          float layers, float threshold, float* errors)
{
    if (count <= 0)
        return;
    if (!prepare(candidates[0].source, filledMask)) {
        std::fill(errors, errors + count, 0.0f);
        return;
    }
    const int layerCount = comparedLayers(useAllLayers);
    const size_t F2 = size_t(fullSize()) * size_t(fullSize());
    if (batchErrors.size() < F2 * size_t(count))
        batchErrors.resize(F2 * size_t(count));
    const int64_t filled = filledRingPixels(filledMask);
    // The best error so far, lowered by every candidate whose complete error
    // the threshold rejects: a candidate above it can neither win nor pass.
    std::atomic<float> beaten{bestError};
    const int team = std::max(1, std::min({count, teamSize, int(scratch.size())}));
#pragma omp parallel for num_threads(team) schedule(dynamic, 1)
    for (int i = 0; i < count; ++i) {
        RingScratch& s = scratch[size_t(omp_get_thread_num())];
        bool complete = true;
        const float error = ringError(candidates[i], filledMask, layerCount, filled, earlyExit ? &beaten : nullptr, s,
                                      batchErrors.data() + F2 * size_t(i), complete);
        errors[i] = error;
        if (earlyExit && complete && error / layers > threshold) {
            float current = beaten.load(std::memory_order_relaxed);
            while (error < current && !beaten.compare_exchange_weak(current, error, std::memory_order_relaxed)) {
            }
        }
    }
}

void Patch::takeEvaluated(int i, const PatchSource& candidate, float error)
{
    if (!(bestError > error))
        return;
    const size_t F2 = size_t(fullSize()) * size_t(fullSize());
    if (recordedErrors && batchErrors.size() >= F2 * size_t(i + 1))
        std::copy_n(batchErrors.data() + F2 * size_t(i), F2, recordedErrors);
    bestError = error;
    delete bestSource;
    bestSource = candidate.clone();
    onBetterCandidate();
}

void Patch::ringRow(int32_t dy, const PatchSource& candidate, const uint8_t* filledMask, int layerCount,
                    bool identity, RingScratch& s, float* fullErrors) const
{
    const int32_t F = fullSize();
    const int32_t B = patchBoundary;
    const int32_t P = patchSize;
    float* errors = fullErrors + int64_t(dy) * F;
    std::fill(errors, errors + F, 0.0f);
    const int32_t ty = foldRepeat(y + dy, targetHeight);
    const uint8_t* filledRow = filledMask + int64_t(ty) * targetWidth;
    // The core is not compared: only the ring columns of a core row.
    const bool coreRow = dy >= B && dy < P + B;
    const int32_t firstEnd = coreRow ? std::min(B, F) : F;
    const int32_t secondBegin = coreRow ? P + B : F;
    for (int l = 0; l < layerCount; ++l) {
        const RowContext row = rowContext(l, candidate, identity, ty, dy, s.sourceColumns.data());
        if (identity) {
            addRowErrorsOf<true>(row, filledRow, 0, firstEnd, errors);
            addRowErrorsOf<true>(row, filledRow, secondBegin, F, errors);
        } else {
            addRowErrorsOf<false>(row, filledRow, 0, firstEnd, errors);
            addRowErrorsOf<false>(row, filledRow, secondBegin, F, errors);
        }
    }
    float sum = 0.0f;
    int64_t count = 0;
    for (int32_t dx = 0; dx < F; ++dx) {
        if ((dx < firstEnd || dx >= secondBegin) && filledRow[targetColumns[dx]]) {
            sum += errors[dx];
            ++count;
        }
    }
    s.rowSums[dy] = sum;
    s.rowCounts[dy] = count;
}

int64_t Patch::filledRingPixels(const uint8_t* filledMask) const
{
    const int32_t F = fullSize();
    const int32_t B = patchBoundary;
    const int32_t P = patchSize;
    int64_t count = 0;
    for (int32_t dy = 0; dy < F; ++dy) {
        const uint8_t* filledRow = filledMask + int64_t(foldRepeat(y + dy, targetHeight)) * targetWidth;
        const bool coreRow = dy >= B && dy < P + B;
        for (int32_t dx = 0; dx < F; ++dx)
            if ((!coreRow || dx < B || dx >= P + B) && filledRow[targetColumns[dx]])
                ++count;
    }
    return count;
}

float Patch::ringError(const PatchSource& candidate, const uint8_t* filledMask, int layerCount, int64_t filledCount,
                       const std::atomic<float>* beaten, RingScratch& s, float* errors, bool& complete) const
{
    const int32_t F = fullSize();
    const bool identity = candidate.isIdentity();
    prepareSourceColumns(candidate, layerCount, s);
    // The rows are summed in the same order as the row-parallel evaluation,
    // so a candidate that is not stopped gets exactly the same error.
    float sum = 0.0f;
    int64_t count = 0;
    for (int32_t dy = 0; dy < F; ++dy) {
        ringRow(dy, candidate, filledMask, layerCount, identity, s, errors);
        sum += s.rowSums[dy];
        count += s.rowCounts[dy];
        const int64_t remaining = filledCount - count;
        if (!beaten || remaining <= 0)
            continue;
        const float bound = beaten->load(std::memory_order_relaxed);
        if (!(bound < FLT_MAX))
            continue;
        // Every ring pixel adds at least -errorFloor, so once the sum so far,
        // less what the remaining pixels could take away, exceeds the bound
        // for the whole ring, the final error exceeds the bound. A margin of
        // 1e-6 of its size, and a tiny absolute one for a bound of 0, keeps
        // the final float error strictly larger after rounding.
        const double whole = double(bound) * double(filledCount);
        const double limit = whole + std::fabs(whole) * 1.0e-6 + double(filledCount) * 1.0e-30;
        const double slack = double(remaining) * errorFloor
            + (errorFloor > 0.0 ? double(F - dy) * std::max(double(sum), limit) * 1.0e-6 : 0.0);
        if (double(sum) - slack > limit) {
            complete = false;
            const float partial = sum / float(filledCount);
            return partial > bound ? partial : std::nextafter(bound, FLT_MAX);
        }
    }
    complete = true;
    return count >= 1 ? sum / float(count) : sum;
}

RowContext Patch::rowContext(int layer, const PatchSource& candidate, bool identity, int32_t ty, int32_t dy,
                             const int32_t* sourceColumns) const
{
    const LayerView& source = sourceLayers[layer];
    RowContext row{&source, &targetLayers[layer], &candidate, nullptr, nullptr,
                   targetLayers[layer].row(ty), targetColumns.data(), dy, false, false};
    if (identity) {
        const LayerView& pixels = wholePixelLayers[layer];
        row.sourceRow = pixels.row(pixels.foldY(candidate.sy + dy));
        row.sourceColumns = sourceColumns + size_t(layer) * fullSize();
        row.unitNormals = pixels.data != source.data;
        const int32_t last = fullSize() - 1;
        row.unfolded = targetColumns[last] - targetColumns[0] == last
            && row.sourceColumns[last] - row.sourceColumns[0] == last;
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
    // No best candidate when every error of the position was NaN.
    if (!bestSource)
        return;
    if (!ONDRELS_CHECK(size_t(std::max(0, F)) * F == rowWeights.size()) || !prepare(bestSource->source, filledMask))
        return;
    const PatchSource& candidate = *bestSource;
    const int layerCount = usableLayers(sourceLayers, targetLayers);
    const bool identity = candidate.isIdentity();
    prepareSourceColumns(candidate, layerCount, scratch[0]);
    const int32_t* sourceColumns = scratch[0].sourceColumns.data();
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
            const RowContext row = rowContext(l, candidate, identity, ty, dy, sourceColumns);
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
