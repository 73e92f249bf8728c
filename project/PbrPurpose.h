#pragma once

#include <QString>

// The purpose of a texture file in a PBR set, read from its file name. The
// index is the LayerMode the layer gets: 0 color, 1 normal, 2 displacement,
// 3 roughness, 4 metalness, 5 occlusion.
constexpr int pbrPurposeCount = 6;
constexpr int pbrNormalPurpose = 1;

// The purpose of the file at `path` by its stem (name without folder and
// last extension), or -1 when the stem matches none. Case-sensitive.
int pbrPurposeOfFile(const QString& path);

// The layer name of a purpose ("color", "normal", ...), or an empty string
// for an index out of range.
QString pbrLayerName(int purpose);

// The purpose whose layer name is `name`, or -1.
int pbrPurposeOfLayerName(const QString& name);
