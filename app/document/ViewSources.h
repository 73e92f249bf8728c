#pragma once

#include "RecordRef.h"

#include <QString>

#include <string>
#include <vector>

class Image;

// What the two 2D views can show from the project, found fresh from the
// store each time so that no pointer outlives an edit.
namespace ViewSources {

// One entry of the input view's chooser.
struct InputChoice
{
    QString label;
    const Image* image = nullptr; // null: nothing to show (a layer without texture)
};

// For a texture or map: its image. For a surface: each layer's texture, then
// its mask texture, direction map and scale map. Always last: the project
// mask. Models and null references give the project mask alone.
std::vector<InputChoice> inputChoices(Velmor::ProjectData& store, const RecordRef& record);

// Layer names of the surface's output, in layer order; empty without output.
std::vector<std::string> outputLayerNames(const Velmor::ProjectData::SurfaceData* surface);
// The output layer called `name`, or null when the surface has no output or
// no such layer.
const Image* outputLayer(const Velmor::ProjectData::SurfaceData* surface, const std::string& name);

} // namespace ViewSources
