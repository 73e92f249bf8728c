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
// again (read back as the height), block length, block.
bool writeMapFile(const QString& path, const ProjectData::DirectionMapData& map);
bool writeMapFile(const QString& path, const ProjectData::ScaleMapData& map);
// Both readers create the record first, so a missing or damaged file still
// gives a map with the default name and contents (and a warning).
ProjectData::DirectionMapData* readDirectionMapFile(const QString& path, ProjectData& store);
ProjectData::ScaleMapData* readScaleMapFile(const QString& path, ProjectData& store);

// "Mask.cache": the project mask as width, width, block length, block.
bool writeMaskCache(const QString& path, const ProjectData& store);
// False (the mask unchanged, a warning logged) for a missing or damaged file.
bool readMaskCache(const QString& path, ProjectData& store);

// The frozen results of a mixed surface ("Surface" + ID + ".cache"). Writes
// nothing, and removes a stale file, when no part is both frozen and made.
bool writeMixedCache(const QString& path, const ProjectData::MixedSurfaceData& mixed);
// Replaces the surface's results only when the whole file reads correctly;
// does nothing unless a freeze flag is set or when the file does not exist.
bool readMixedCache(const QString& path, ProjectData::MixedSurfaceData& mixed);

} // namespace Velmor
