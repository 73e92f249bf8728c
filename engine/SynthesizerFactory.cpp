#include "SynthesizerFactory.h"

#include "BasicPatchSynthesizer.h"
#include "CutoutPatchSynthesizer.h"

namespace Velmor {

ImageSynthesizer* createSynthesizer(const std::string& methodName)
{
    if (methodName == "Patch Based Blended")
        return new BasicPatchSynthesizer();
    if (methodName == "Patch Based Cutout")
        return new CutoutPatchSynthesizer();
    return nullptr;
}

} // namespace Velmor
