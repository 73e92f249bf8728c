#pragma once

#include "ProjectData.h"

#include <QString>

namespace Velmor {

// The XML record files: texture (".vmt"), model (".vmm"), surface (".vms")
// and mixed surface (".vmsm"). Writers return false (after logging) when the
// file could not be written. Readers create the record in the store and
// return it, or log "XML parse error: ..." and create nothing when the file
// does not parse or lacks a required item; a file whose root element is of
// another kind is skipped silently.

bool writeTextureFile(const QString& path, const ProjectData::TextureData& texture);
ProjectData::TextureData* readTextureFile(const QString& path, ProjectData& store);

bool writeModelFile(const QString& path, const ProjectData::ModelData& model);
ProjectData::ModelData* readModelFile(const QString& path, ProjectData& store);

bool writeSurfaceFile(const QString& path, const ProjectData::SurfaceData& surface);
ProjectData::SurfaceData* readSurfaceFile(const QString& path, ProjectData& store);

// The mixed surface files also write and read the surface's frozen results,
// "Surface" + ID + ".cache" in `cacheDir`; reading then rebuilds its layers.
bool writeMixedSurfaceFile(const QString& path, const QString& cacheDir, const ProjectData::MixedSurfaceData& mixed);
ProjectData::MixedSurfaceData* readMixedSurfaceFile(const QString& path, const QString& cacheDir, ProjectData& store);

QString mixedCachePath(const QString& cacheDir, int32_t surfaceId);

} // namespace Velmor
