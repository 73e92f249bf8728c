#pragma once

#include "ProjectData.h"

#include <QString>

// Plain-text description of a loaded project: one line per record with its
// name and ID, and below it, indented, the records it refers to (a surface's
// layers with their textures and modes, its mask and maps; a mixed surface's
// white and black surfaces).
QString projectListing(const Velmor::ProjectData& project);
