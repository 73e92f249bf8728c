#pragma once

#include <string>

namespace Velmor {

class ImageSynthesizer;

// A new synthesizer for "Patch Based Blended" or "Patch Based Cutout"
// (the record's "Type"); null for any other name. The caller owns it.
ImageSynthesizer* createSynthesizer(const std::string& methodName);

} // namespace Velmor
