#include "PSGMasked.h"

#include "HaltonSequence.h"
#include "LayeredImage.h"
#include "LogMessage.h"

#include "ImageFile.h"

#include <algorithm>

namespace Velmor {

namespace {

// Where the next false entry at or after each index lies (n when none), so
// that "all true from a to b" is one comparison: next[a] > b.
void nextFalse(const uint8_t* values, int64_t stride, int32_t n, std::vector<int32_t>& next)
{
    next.resize(size_t(n) + 1);
    next[n] = n;
    for (int32_t i = n - 1; i >= 0; --i)
        next[i] = values[int64_t(i) * stride] ? next[i + 1] : i;
}

void writeFinalMask(const std::vector<uint8_t>& columns, int32_t W, int32_t H)
{
    Image image(uint32_t(W), uint32_t(H), Gray);
    for (int32_t y = 0; y < H; ++y)
        for (int32_t x = 0; x < W; ++x)
            image.data[int64_t(y) * W + x] = columns[size_t(x) * H + y] ? 1.0f : 0.0f;
    image.fileType = FilePNG;
    image.sampleType = UInt8;
    // Diagnostic only: a failed save has logged its own message.
    saveImage(QStringLiteral("finalmask.png"), image);
}

} // namespace

void PSGMasked::next(int32_t& x, int32_t& y)
{
    if (!useMask || candidates.empty()) {
        x = int32_t(double(width) * (random.next() / double(RandomGenerator::maxValue)));
        y = int32_t(double(height) * (random.next() / double(RandomGenerator::maxValue)));
        return;
    }
    const double q = HaltonSequence::instance().next();
    size_t i = size_t(uint32_t(int64_t(q * double(candidates.size() - 1))));
    i = std::min(i, candidates.size() - 1);
    x = candidates[i].first;
    y = candidates[i].second;
}

void PSGMasked::prepare(const LayeredImage& source)
{
    candidates.clear();
    const Image* mask = source.mask;
    useMask = mask != nullptr;
    const int32_t W = std::max(0, width);
    const int32_t H = std::max(0, height);
    if (!mask)
        return;
    logMessage(Info, "Preprocessing surface mask.");
    uint32_t channel = source.maskChannel;
    if (channel >= mask->channels())
        channel = 0;
    const int32_t b = patchBoundary;
    const int32_t P = patchSize;

    // Column-major grids: the mask test (A) and phase Y's result (B). A mask
    // without pixels counts as black everywhere.
    std::vector<uint8_t> A(size_t(W) * H, 0);
    std::vector<uint8_t> B(size_t(W) * H, 0);
    bool anyOn = false;
    if (!mask->isEmpty() && mask->channels() > 0) {
        for (int32_t x = 0; x < W; ++x)
            for (int32_t y = 0; y < H; ++y) {
                const bool on = mask->pixelAt(x, y)[int(channel)] > 0.0f;
                A[size_t(x) * H + y] = on;
                anyOn = anyOn || on;
            }
    }

    // Phase Y: a column position qualifies when the whole patch height from
    // it is on the mask (rows above the image are ignored, rows below end
    // the test successfully).
    logMessage(Info, "Filtering surface mask (phase Y).");
#pragma omp parallel
    {
        std::vector<int32_t> next;
#pragma omp for schedule(static)
        for (int32_t x = 0; x < W; ++x) {
            if (!(b < x && x < W - P - b))
                continue;
            const uint8_t* column = A.data() + size_t(x) * H;
            nextFalse(column, 1, H, next);
            for (int32_t y = 0; y < H; ++y) {
                const int32_t first = std::max(0, y - b);
                const int32_t last = int32_t(std::min<int64_t>(int64_t(y) + P + b, H - 1));
                B[size_t(x) * H + y] = next[first] > last;
            }
        }
    }

    // Phase X: the same along rows over phase Y's result. The test ends at
    // the image height, not its width; that is how positions were always
    // chosen, so it stays.
    logMessage(Info, "Filtering surface mask (phase X).");
    const int32_t rows = std::max(0, H - P);
    std::vector<std::vector<int32_t>> rowLists(static_cast<size_t>(rows));
#pragma omp parallel
    {
        std::vector<int32_t> next;
#pragma omp for schedule(static)
        for (int32_t y = 0; y < rows; ++y) {
            if (!(b < y && y < H - b - P))
                continue;
            nextFalse(B.data() + y, H, W, next);
            for (int32_t x = 0; x < W - b - P; ++x) {
                const int32_t first = std::max(0, x - b);
                const int32_t last = int32_t(std::min<int64_t>(int64_t(x) + P + b, H - 1));
                if (first > last || next[first] > last)
                    rowLists[size_t(y)].push_back(x);
            }
        }
    }
    for (int32_t y = 0; y < rows; ++y)
        for (int32_t x : rowLists[size_t(y)])
            candidates.emplace_back(x, y);

    if (candidates.empty()) {
        logMessage(Error, "Cannot find suitable source pixels for given pattern with. Mask is turned off. Try using "
                          "smaller patch size!");
        if (mask->isEmpty() || W == 0 || H == 0)
            logMessage(Error, "The surface mask has no pixels (%u x %u).", mask->width, mask->height);
        else if (!anyOn)
            logMessage(Error, "The surface mask is black everywhere in channel %u: no pixel is above 0.", channel);
        else
            logMessage(Error,
                       "No white area of the surface mask is large enough for a whole patch of %lld x %lld pixels "
                       "(patch size %i plus boundary %i on each side) away from the mask's edges; patches are taken "
                       "from anywhere in the source instead.",
                       (long long)P + 2LL * b, (long long)P + 2LL * b, P, b);
        useMask = false;
    }
    writeFinalMask(B, W, H);
}

} // namespace Velmor
