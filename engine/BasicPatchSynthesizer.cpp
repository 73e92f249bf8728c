#include "BasicPatchSynthesizer.h"

#include "LayeredImage.h"

#include <typeinfo>

namespace Velmor {

ImageSynthesizer::ImageSynthesizerParams*
BasicPatchSynthesizer::BasicPatchSynthesizerParams::copyTo(ImageSynthesizerParams* other) const
{
    return copyPatchFieldsTo(other);
}

BasicPatchSynthesizer::BasicPatchSynthesizer()
{
    params = new BasicPatchSynthesizerParams();
}

BasicPatchSynthesizer::~BasicPatchSynthesizer()
{
    delete params;
    params = nullptr;
}

ImageSynthesizer* BasicPatchSynthesizer::clone() const
{
    auto* copy = new BasicPatchSynthesizer();
    params->copyTo(copy->params);
    return copy;
}

Patch* BasicPatchSynthesizer::preparePatch()
{
    const PatchSynthesizerParams* p = patchParams();
    patch.init(target, p->patchSize, p->patchBoundary);
    return &patch;
}

} // namespace Velmor
