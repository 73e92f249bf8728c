#pragma once

#include "LayerView.h"
#include "RandomGenerator.h"

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

class LayeredImage;

namespace Velmor {

// Where a pasted patch came from, and how many patches in a row before it
// continued their left or upper neighbour.
struct Placement
{
    int32_t sx = 0;
    int32_t sy = 0;
    float dirX = 0.0f;
    float dirY = 1.0f;
    float scale = 1.0f;
    int32_t runX = 0;
    int32_t runY = 0;
};

// The source position that continues `neighbour` for a patch placed
// (stepX, stepY) target pixels from it: the step turned and scaled the way
// the neighbour's patch was, so that its content goes on across the border.
void continuePlacement(const Placement& neighbour, int32_t stepX, int32_t stepY, int32_t& sx, int32_t& sy);

// Whether the source's opposite edges meet like neighbouring pixels do:
// differences across the wrap-around edges at most 1.5 times the mean
// difference between neighbouring pixels (first compared layer).
bool sourceTiles(const LayeredImage& source, int32_t width, int32_t height);

// Mean difference between source pixels `distance` apart, horizontally and
// vertically, summed over the compared layers as the ring error is: about
// the error of a patch placed that far off its best place.
double neighbourDifference(const LayeredImage& source, int32_t width, int32_t height, bool useAllLayers,
                           int32_t distance);

// The per-position part of the structured search that does not need full
// ring evaluations: neighbour-continuation candidates and a whole-source
// search on sparse ring samples. All buffers are made by init.
class StructuredSearch
{
public:
    struct Position
    {
        int32_t sx;
        int32_t sy;
    };

    // The continuation candidates of one position: at most one per side.
    static constexpr int maxContinuations = 4;

    // `guided` runs turn and scale their patches, whose interpolated reads
    // cost several times more: they compare fewer positions, more sparsely.
    void init(const LayeredImage& source, const LayeredImage& target, int32_t sourceWidth, int32_t sourceHeight,
              int32_t patchSize, int32_t boundary, bool useAllLayers, bool tiles, int keep, bool guided = false);

    // Starts destination (x, y): positions that would continue a neighbour
    // whose run of continuations is at its limit become unusable, as does
    // anything within half a patch of them.
    void beginPosition(int32_t x, int32_t y);

    // A position is usable when the whole patch lies in the source, or
    // anywhere when the source tiles, and it is not banned for the current
    // destination; a tiling source's position is folded.
    bool usable(int32_t& sx, int32_t& sy) const;

    // Candidates continuing the placed neighbours of destination (x, y)
    // whose run of continuations is still short enough; `side` tells which
    // neighbour (0 left, 1 up, 2 right, 3 down).
    int continuations(int32_t x, int32_t y, Position* out, int* side) const;
    void record(int32_t x, int32_t y, const Placement& placement);
    const Placement* placedAt(int32_t x, int32_t y) const;

    // The `keep` best positions (fewer when nothing is filled) of a lattice
    // over the source with a random origin, each then moved downhill on the
    // sparse error with halving steps. Deterministic for a given random
    // state, whatever the number of threads.
    int coarseSearch(int32_t x, int32_t y, const uint8_t* filledMask, float dirX, float dirY, float scale,
                     RandomGenerator& random, Position* out);

    // Longest run of continuations in a row before a fresh position is
    // required, so that the output does not copy the source whole.
    int32_t maxRunX = 0;
    int32_t maxRunY = 0;
    int32_t stride = 1;

private:
    float sparseError(int32_t sx, int32_t sy, float dirX, float dirY, float scale) const;
    int32_t key(int32_t v, int32_t n) const { return foldRepeat(v, n); }

    std::vector<LayerView> sourceLayers;
    std::vector<LayerView> targetLayers;
    int32_t width = 0;
    int32_t height = 0;
    int32_t targetWidth = 0;
    int32_t targetHeight = 0;
    int32_t patchSize = 0;
    int32_t boundary = 0;
    int32_t fullSize = 0;
    int32_t halfSize = 0;
    int32_t sampleStep = 1;
    bool tiles = false;
    int keep = 1;
    int channelSum = 0;

    // Ring samples of the current position: offsets and target values.
    std::vector<std::pair<int32_t, int32_t>> sampleOffsets;
    std::vector<float> sampleValues; // per layer, samples x channels
    std::vector<size_t> layerStart;
    int sampleCount = 0;

    Position banned[maxContinuations];
    int bannedCount = 0;

    std::vector<Position> lattice;
    std::vector<float> latticeErrors;
    std::vector<int> order;
    std::map<std::pair<int32_t, int32_t>, Placement> placed;
};

} // namespace Velmor
