#pragma once

#include "MeshVertex.h"
#include "ProjectData.h"

#include <vector>

class Image;
class Mesh;
class ProjectDocument;
class UvSpaceRenderer;

// The UV tools' changes to the project, each one undo step on the document.
// All refuse, touching nothing, while the document is read-only (a run reads
// the store). The renderer's edits need its OpenGL context current.
namespace UvEdits {

// The layers of the surface's generated output; empty before a run.
std::vector<Image*> generatedLayers(Velmor::ProjectData::SurfaceData* surface);

// "Fix UV Seams" on every generated layer of `surface` for the mesh.
bool fixSeams(ProjectDocument& document, Velmor::ProjectData::SurfaceData* surface,
              const std::vector<MeshVertex>& vertices);

// Fills the direction map from the mesh's geometry with auto mode 0..5.
bool generateAutoDirection(ProjectDocument& document, UvSpaceRenderer& renderer, Mesh* mesh,
                           Velmor::ProjectData::DirectionMapData* map, int autoMode);

// Writes island `island` (-1: all) into the project mask, the output mask,
// sized after `generated` when there is one.
bool loadOutputMaskFromUVIsland(ProjectDocument& document, UvSpaceRenderer& renderer, Mesh* mesh,
                                const Image* generated, int island, bool add);

} // namespace UvEdits
