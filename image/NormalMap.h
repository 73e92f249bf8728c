#pragma once

#include <QString>

class Image;

// Flags with which a colour image becomes a normal layer: signed float files
// already hold vectors, every other file maps 0..1 to -1..1.
struct NormalMapConversion
{
    bool flipX = false;
    bool flipY = false;
    bool mappedXY = true;
    bool mappedZ = true;
};

// How a texture must be converted when a surface layer is switched to the
// normal mode. `convertible` is false for images that are not RGB or RGBA.
struct NormalLayerRule
{
    bool convertible = false;
    NormalMapConversion conversion;
};

NormalLayerRule normalLayerRule(const Image& image);

// Converts `image` to a normal map by the rule above; returns false (and
// changes nothing) when it is not a colour image. Images that are already
// normal maps are left alone and count as converted.
bool convertToNormalLayer(Image& image);

// Question asked before converting a colour texture of a normal layer.
extern const char* const normalLayerQuestion;
// Shown when the texture of a normal layer cannot be converted.
extern const char* const normalLayerNotConvertible;
// Logged (warning) when an imported normal layer cannot be converted.
extern const char* const normalLayerImportWarning;
