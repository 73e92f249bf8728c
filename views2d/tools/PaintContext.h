#pragma once

#include "BrushSettings.h"
#include "ProjectData.h"
#include "RecordRef.h"

class ProjectDocument;

// A map a tool may write: the image and the record that owns it.
struct MapTarget
{
    Image* image = nullptr;
    RecordRef owner;

    bool isValid() const { return image && !image->isEmpty(); }
};

// What every tool of the tool box shares: the document, the surface whose
// maps are painted, and the tool bar's settings.
struct PaintContext
{
    explicit PaintContext(ProjectDocument* document) : document(document) {}

    // The map to paint now; an invalid target, after a log message saying
    // why, when there is none.
    MapTarget target(PaintMap map) const;
    // Width / height of the image the generated view shows: the surface's
    // output; 1 (the view's blank square) without one.
    double shownAspect() const;

    ProjectDocument* document;
    Velmor::ProjectData::SurfaceData* surface = nullptr;
    BrushSettings settings;
};
