#include "PaintContext.h"

#include "ImageSynthesizer.h"
#include "LayeredImage.h"
#include "LogMessage.h"
#include "MessageSeverity.h"
#include "ProjectDocument.h"

using Velmor::ProjectData;

MapTarget PaintContext::target(PaintMap map) const
{
    MapTarget result;
    if (map == PaintMap::Mask) {
        result.image = &document->store().projectMask;
        result.owner = RecordRef::projectMask(document->store());
    } else if (!surface) {
        logMessage(Warning, QStringLiteral("Select a surface to paint its maps."));
        return result;
    } else if (map == PaintMap::Direction) {
        if (surface->directionMap) {
            result.image = &surface->directionMap->image;
            result.owner = RecordRef(surface->directionMap);
        } else {
            logMessage(Warning, QStringLiteral("Surface '%1' has no direction map to paint: choose one for it first.")
                                    .arg(QString::fromStdString(surface->name)));
        }
    } else if (surface->scaleMap) {
        result.image = &surface->scaleMap->image;
        result.owner = RecordRef(surface->scaleMap);
    } else {
        logMessage(Warning, QStringLiteral("Surface '%1' has no scale map to paint: choose one for it first.")
                                .arg(QString::fromStdString(surface->name)));
    }
    if (result.image && result.image->isEmpty())
        logMessage(Warning,
                   QStringLiteral("'%1' has no pixels to paint.").arg(QString::fromStdString(result.owner.name())));
    return result;
}

double PaintContext::shownAspect() const
{
    // The view shows a square until there is an output.
    const Velmor::ImageSynthesizer* synthesizer = surface ? surface->synthesizer() : nullptr;
    if (!synthesizer || !synthesizer->targetReady || !synthesizer->target || synthesizer->target->layerCount() == 0)
        return 1.0;
    const Image* output = synthesizer->target->layers[0];
    return output && !output->isEmpty() ? double(output->width) / double(output->height) : 1.0;
}
