#pragma once

#include "EnvironmentMap.h"

#include <QString>
#include <QStringList>

// Our own environment maps: linear radiance over the sphere of directions,
// rendered equirectangular like the preview samples them (u from the
// azimuth atan(z, x), v from the elevation, row 0 looking down).
QStringList environmentSceneNames(); // "HotelRoom", "Venice", "Studio"
EnvironmentLevel renderEnvironmentScene(const QString& name, uint32_t width, uint32_t height);

// The four levels of a set: level 0 is the sharp map, each further level half
// the size and blurred more, so that rough materials (which sample levels up
// to 3) reflect a blurred environment.
EnvironmentMap blurredLevels(const EnvironmentLevel& sharp);
