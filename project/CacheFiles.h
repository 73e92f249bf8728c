#pragma once

#include "ProjectData.h"

#include <QString>

namespace Velmor {

// Pixel blocks of cache and map files are zlib-compressed (level 9) when this
// is on; readers follow the same switch, the files do not say which form
// they hold.
extern bool cacheCompression;

// Largest image a cache or map file may describe; anything bigger is taken
// for a damaged file rather than allocated.
constexpr uint32_t maxCacheImageSide = 32768;
constexpr uint64_t maxCacheImagePixels = uint64_t(1) << 28;

// Direction (".vdm") and scale (".vsm") map files: ID, name, width, width
// again (read back as the height), block length, block of the image's own
// width x height data.
bool writeMapFile(const QString& path, const ProjectData::DirectionMapData& map);
bool writeMapFile(const QString& path, const ProjectData::ScaleMapData& map);
// Both readers create the record first, so a missing file still gives a map
// with the default name and contents (and a warning). The ID and name are
// taken as soon as they are read; a damaged block leaves the image partly
// filled, with a warning naming the file.
ProjectData::DirectionMapData* readDirectionMapFile(const QString& path, ProjectData& store);
ProjectData::ScaleMapData* readScaleMapFile(const QString& path, ProjectData& store);

// "Mask.cache": the project mask as width, width, block length, block.
bool writeMaskCache(const QString& path, const ProjectData& store);
// False for a missing file (silently, the default mask stays) or a damaged
// one (with a warning; a damaged block leaves the mask partly filled).
bool readMaskCache(const QString& path, ProjectData& store);

// The frozen results of a mixed surface ("Surface" + ID + ".cache"). Writes
// nothing, and removes a stale file, when no part is both frozen and made.
bool writeMixedCache(const QString& path, const ProjectData::MixedSurfaceData& mixed);
// Replaces the surface's results once the header (flags and size) reads;
// a damaged part later ends the reading with a warning and keeps what was
// read before it (a partly filled image included). True for a whole file;
// does nothing unless a freeze flag is set or when the file does not exist.
bool readMixedCache(const QString& path, ProjectData::MixedSurfaceData& mixed);

} // namespace Velmor
