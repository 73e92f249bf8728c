#include "RingErrorFloor.h"

#include "LayeredImage.h"

#include <cmath>

namespace Velmor {

namespace {

// Several hundred times what two normalisations and a double dot product can
// take below 0.
constexpr double normalSlack = 1.0e-5;

bool allFinite(const Image& image)
{
    const uint64_t n = image.floatCount();
    for (uint64_t i = 0; i < n; ++i)
        if (!std::isfinite(image.data[i]))
            return false;
    return true;
}

// Every normal leans towards +Z: any blend of two of them keeps a clearly
// positive Z, so normalising it never divides by zero.
bool normalsFaceUp(const Image& image)
{
    const uint64_t n = image.pixelCount();
    for (uint64_t i = 0; i < n; ++i) {
        const float* p = image.data + 3 * i;
        const double length = std::sqrt(double(p[0]) * p[0] + double(p[1]) * p[1] + double(p[2]) * p[2]);
        if (!(length > 1.0e-6 && length < 1.0e6 && p[2] > 1.0e-3 * length))
            return false;
    }
    return true;
}

} // namespace

double ringErrorFloor(const LayeredImage& source, bool useAllLayers, bool guided, bool startFilled)
{
    if (startFilled)
        return -1.0;
    const size_t compared = useAllLayers ? source.layerCount() : std::min<size_t>(1, source.layerCount());
    int normalLayers = 0;
    for (size_t l = 0; l < compared; ++l) {
        const Image* layer = source.layers[l];
        if (!layer || layer->isEmpty())
            continue;
        if (!allFinite(*layer))
            return -1.0;
        if (layer->format == Normal) {
            if (guided || !normalsFaceUp(*layer))
                return -1.0;
            ++normalLayers;
        }
    }
    return normalLayers * normalSlack;
}

} // namespace Velmor
