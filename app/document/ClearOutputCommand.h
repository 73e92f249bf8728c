#pragma once

#include "ProjectDocument.h"

#include <QUndoCommand>

class LayeredImage;

namespace Velmor {
class ImageSynthesizer;
}

// "Clear Output": takes the generated layers away from the surface's current
// synthesizer and keeps them, so that undo gives the very same images back.
// Redo and undo swap the held output with the synthesizer's, so an output
// made by a later run is kept by the command instead of being lost.
class ClearOutputCommand : public QUndoCommand
{
public:
    ClearOutputCommand(ProjectDocument* document, Velmor::ProjectData::SurfaceData* surface);
    ~ClearOutputCommand() override;

    void redo() override { swap(); }
    void undo() override { swap(); }

private:
    void swap();

    ProjectDocument* document;
    Velmor::ProjectData::SurfaceData* surface;
    Velmor::ImageSynthesizer* synthesizer;
    LayeredImage* held = nullptr; // owned here
};
