#include "SynthesizerFactory.h"

#include "BasicPatchSynthesizer.h"
#include "CutoutPatchSynthesizer.h"
#include "MethodNames.h"

namespace Velmor {

ImageSynthesizer* createSynthesizer(const std::string& methodName)
{
    if (methodName == blendedMethodName)
        return new BasicPatchSynthesizer();
    if (methodName == cutoutMethodName)
        return new CutoutPatchSynthesizer();
    return nullptr;
}

} // namespace Velmor
