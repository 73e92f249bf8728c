#include "ParameterCheck.h"

#include "SynthesisLimits.h"

namespace ParameterCheck {

using Velmor::maxFullPatchSize;
using Velmor::maxTargetPixels;
using Velmor::maxTargetSide;

namespace {

// A patch with its boundary ring on both sides beyond the engine's limit.
QString fullPatchTooLarge(int64_t size, int64_t boundary)
{
    if (size >= 1 && boundary >= 0 && size + 2 * boundary > maxFullPatchSize)
        return QStringLiteral("Patch with boundary is %1 pixels; at most %2.")
            .arg(size + 2 * boundary)
            .arg(maxFullPatchSize);
    return QString();
}

} // namespace

QString targetSize(int64_t width, int64_t height)
{
    if (width < 1 || height < 1)
        return QStringLiteral("Each side must be at least 1 pixel.");
    if (width > maxTargetSide || height > maxTargetSide)
        return QStringLiteral("Each side must be at most %1 pixels.").arg(maxTargetSide);
    if (width * height > maxTargetPixels)
        return QStringLiteral("At most %1 pixels in all.").arg(maxTargetPixels);
    return QString();
}

QString patchSize(int64_t size, int64_t boundary)
{
    if (size < 1)
        return QStringLiteral("Must be at least 1.");
    return fullPatchTooLarge(size, boundary);
}

QString patchBoundary(int64_t size, int64_t boundary)
{
    if (boundary < 0)
        return QStringLiteral("Must not be negative.");
    return fullPatchTooLarge(size, boundary);
}

} // namespace ParameterCheck
