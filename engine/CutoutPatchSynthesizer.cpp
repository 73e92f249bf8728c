#include "CutoutPatchSynthesizer.h"

#include "LayeredImage.h"

#include <tinyxml2.h>

namespace Velmor {

ImageSynthesizer::ImageSynthesizerParams*
CutoutPatchSynthesizer::CutoutPatchSynthesizerParams::copyTo(ImageSynthesizerParams* other) const
{
    auto* same = static_cast<CutoutPatchSynthesizerParams*>(copyPatchFieldsTo(other));
    if (same)
        same->feather = feather;
    return same;
}

void CutoutPatchSynthesizer::CutoutPatchSynthesizerParams::writeXml(tinyxml2::XMLElement* parent) const
{
    PatchSynthesizerParams::writeXml(parent);
    if (!parent)
        return;
    tinyxml2::XMLElement* element = parent->GetDocument()->NewElement("Feather");
    element->SetText(unsigned(feather));
    parent->InsertEndChild(element);
}

void CutoutPatchSynthesizer::CutoutPatchSynthesizerParams::readXml(const tinyxml2::XMLElement* parent)
{
    PatchSynthesizerParams::readXml(parent);
    if (!parent)
        return;
    unsigned value = 0;
    if (const tinyxml2::XMLElement* element = parent->FirstChildElement("Feather");
        element && element->QueryUnsignedText(&value) == tinyxml2::XML_SUCCESS)
        feather = int32_t(value);
}

CutoutPatchSynthesizer::CutoutPatchSynthesizer()
{
    params = new CutoutPatchSynthesizerParams();
}

CutoutPatchSynthesizer::~CutoutPatchSynthesizer()
{
    delete params;
    params = nullptr;
}

ImageSynthesizer* CutoutPatchSynthesizer::clone() const
{
    auto* copy = new CutoutPatchSynthesizer();
    params->copyTo(copy->params);
    return copy;
}

Patch* CutoutPatchSynthesizer::preparePatch()
{
    const auto* p = static_cast<const CutoutPatchSynthesizerParams*>(params);
    patch.init(target, p->patchSize, p->patchBoundary);
    patch.feather = p->feather;
    return &patch;
}

} // namespace Velmor
