#include "NormalConvention.h"

#include "Image.h"

#include <cmath>

namespace {

// Pearson correlation of the pairs added so far.
struct Correlation
{
    double n = 0, sa = 0, sb = 0, saa = 0, sbb = 0, sab = 0;

    void add(double a, double b)
    {
        n += 1;
        sa += a;
        sb += b;
        saa += a * a;
        sbb += b * b;
        sab += a * b;
    }
    double value() const
    {
        const double va = n * saa - sa * sa;
        const double vb = n * sbb - sb * sb;
        if (!(va > 0.0 && vb > 0.0))
            return 0.0;
        return (n * sab - sa * sb) / std::sqrt(va * vb);
    }
};

} // namespace

NormalConvention detectNormalConvention(const Image& normal, const Image& height)
{
    NormalConvention result;
    if (normal.format != Normal || normal.isEmpty() || height.isEmpty() || height.channels() == 0)
        return result;
    const int64_t w = normal.width;
    const int64_t h = normal.height;
    const uint32_t hc = height.channels();
    // The height at normal-map pixel (x, y), folded at the edges.
    const auto heightAt = [&](int64_t x, int64_t y) {
        x = (x % w + w) % w;
        y = (y % h + h) % h;
        const int64_t hx = x * int64_t(height.width) / w;
        const int64_t hy = y * int64_t(height.height) / h;
        return double(height.data[hc * uint64_t(hx + int64_t(height.width) * hy)]);
    };
    Correlation cx;
    Correlation cy;
    for (int64_t y = 0; y < h; ++y)
        for (int64_t x = 0; x < w; ++x) {
            const float* n = normal.data + 3 * uint64_t(x + w * y);
            if (!std::isfinite(n[0]) || !std::isfinite(n[1]))
                continue;
            const double slopeX = heightAt(x + 1, y) - heightAt(x - 1, y);
            const double slopeY = heightAt(x, y + 1) - heightAt(x, y - 1);
            if (!std::isfinite(slopeX) || !std::isfinite(slopeY))
                continue;
            cx.add(n[0], -slopeX);
            cy.add(n[1], -slopeY);
        }
    result.correlationX = cx.value();
    result.correlationY = cy.value();
    result.decided = std::fabs(result.correlationX) >= minNormalCorrelation
        && std::fabs(result.correlationY) >= minNormalCorrelation;
    result.flipX = result.decided && result.correlationX < 0.0;
    result.flipY = result.decided && result.correlationY < 0.0;
    return result;
}

void flipNormalLayer(Image& normal, bool flipX, bool flipY)
{
    if (normal.format != Normal || (!flipX && !flipY))
        return;
    // Back to the file's colours, then forward with the new flips.
    const bool x = normal.flipNormalX != flipX;
    const bool y = normal.flipNormalY != flipY;
    const bool mappedXY = normal.mappedNormalXY;
    const bool mappedZ = normal.mappedNormalZ;
    normal.fromNormalMap();
    normal.toNormalMap(x, y, mappedXY, mappedZ);
}
