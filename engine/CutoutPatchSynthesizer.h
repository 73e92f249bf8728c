#pragma once

#include "CutoutPatch.h"
#include "ImageSynthesizer.h"
#include "MethodNames.h"

namespace Velmor {

// "Patch Based Cutout": pastes patches along a minimum-error cut through
// their boundary ring, feathered over `feather` pixels.
class CutoutPatchSynthesizer : public ImageSynthesizer
{
public:
    class CutoutPatchSynthesizerParams : public PatchSynthesizerParams
    {
    public:
        std::string methodName() const override { return cutoutMethodName; }
        ImageSynthesizerParams* copyTo(ImageSynthesizerParams* other) const override;
        void writeXml(tinyxml2::XMLElement* parent) const override;
        void readXml(const tinyxml2::XMLElement* parent) override;

        int32_t feather = 4;
    };

    CutoutPatchSynthesizer();
    ~CutoutPatchSynthesizer() override;
    ImageSynthesizer* clone() const override;

    CutoutPatch patch;

protected:
    Patch* preparePatch() override;
};

} // namespace Velmor
