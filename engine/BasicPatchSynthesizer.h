#pragma once

#include "BlendedPatch.h"
#include "ImageSynthesizer.h"
#include "MethodNames.h"

namespace Velmor {

// "Patch Based Blended": pastes patches whose boundary ring cross-fades into
// the target.
class BasicPatchSynthesizer : public ImageSynthesizer
{
public:
    class BasicPatchSynthesizerParams : public PatchSynthesizerParams
    {
    public:
        std::string methodName() const override { return blendedMethodName; }
        ImageSynthesizerParams* copyTo(ImageSynthesizerParams* other) const override;
    };

    BasicPatchSynthesizer();
    ~BasicPatchSynthesizer() override;
    ImageSynthesizer* clone() const override;

    BlendedPatch patch;

protected:
    Patch* preparePatch() override;
};

} // namespace Velmor
