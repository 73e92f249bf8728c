#pragma once

#include "CommandLine.h"
#include "ImageSynthesizer.h"

// Overrides the patch settings that the command line gives (patch size,
// boundary, error threshold, tries, source search, and feather for the cutout method);
// settings it does not give keep their values.
void applyPatchOptions(const CommandLine& cl, Velmor::ImageSynthesizer::ImageSynthesizerParams* params);
