#include "PixelReadout.h"

#include <cmath>

QString pixelReadout(const Image& image, QPointF texture)
{
    if (image.isEmpty() || image.format == None)
        return QString();
    const double fx = std::floor(texture.x() * image.width);
    const double fy = std::floor(texture.y() * image.height);
    if (!(fx >= 0.0 && fy >= 0.0 && fx < image.width && fy < image.height))
        return QString();
    const uint32_t x = uint32_t(fx), y = uint32_t(fy);
    const uint32_t channels = image.channels();
    const float* pixel = image.data + channels * (uint64_t(x) + uint64_t(image.width) * y);
    QString text = QStringLiteral("x %1  y %2 ").arg(x).arg(y);
    for (uint32_t c = 0; c < channels; ++c)
        text += QStringLiteral(" %1").arg(double(pixel[c]), 0, 'f', 3);
    return text;
}
