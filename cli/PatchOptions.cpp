#include "PatchOptions.h"

#include "CutoutPatchSynthesizer.h"

void applyPatchOptions(const CommandLine& cl, Velmor::ImageSynthesizer::ImageSynthesizerParams* params)
{
    if (auto* patch = dynamic_cast<Velmor::ImageSynthesizer::PatchSynthesizerParams*>(params)) {
        if (cl.patchSize)
            patch->patchSize = *cl.patchSize;
        if (cl.boundary)
            patch->patchBoundary = *cl.boundary;
        if (cl.errorThreshold)
            patch->errorThreshold = *cl.errorThreshold;
        if (cl.maxTries)
            patch->maxTries = *cl.maxTries;
        if (cl.sourceSearch)
            patch->sourceSearch = *cl.sourceSearch;
    }
    using CutoutParams = Velmor::CutoutPatchSynthesizer::CutoutPatchSynthesizerParams;
    if (auto* cutout = dynamic_cast<CutoutParams*>(params); cutout && cl.feather)
        cutout->feather = *cl.feather;
}
