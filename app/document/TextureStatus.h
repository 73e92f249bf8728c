#pragma once

#include "ProjectData.h"

#include <QString>

// One line about a texture's file for the browser's tool tip and the texture
// panel: its path, or why its image could not be loaded.
QString textureStatus(const Velmor::ProjectData::TextureData& texture);
