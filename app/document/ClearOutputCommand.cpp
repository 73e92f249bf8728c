#include "ClearOutputCommand.h"

#include "ImageSynthesizer.h"
#include "LayeredImage.h"

#include <utility>

ClearOutputCommand::ClearOutputCommand(ProjectDocument* document, Velmor::ProjectData::SurfaceData* surface)
    : QUndoCommand(QStringLiteral("Clear Output"))
    , document(document)
    , surface(surface)
    , synthesizer(surface ? surface->synthesizer() : nullptr)
{
}

ClearOutputCommand::~ClearOutputCommand()
{
    if (held) {
        held->deleteLayers();
        delete held;
    }
}

void ClearOutputCommand::swap()
{
    // An output the synthesizer has handed to someone else is left alone.
    if (!synthesizer || (synthesizer->target && !synthesizer->ownsTarget))
        return;
    std::swap(synthesizer->target, held);
    synthesizer->ownsTarget = true;
    synthesizer->targetReady = synthesizer->target != nullptr;
    document->notifyChanged(RecordRef(surface));
}
