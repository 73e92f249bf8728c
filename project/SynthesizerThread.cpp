#include "SynthesizerThread.h"

#include "SurfaceSynthesis.h"
#include "SurfaceSynthesisContext.h"

#include <functional>

namespace Velmor {

SynthesizerThread::SynthesizerThread(ProjectData::SurfaceData* surface, QObject* parent)
    : QThread(parent)
    , target(surface)
{
    // A new run: a cancel left from an earlier one must not stop it.
    if (target && target->synthesisContext)
        target->synthesisContext->cancelRequested = false;
}

void SynthesizerThread::progress(int value)
{
    emit onProgress(value);
}

void SynthesizerThread::cancel()
{
    if (target && target->synthesisContext)
        requestCancel(*target->synthesisContext);
}

void SynthesizerThread::run()
{
    {
        const ImageSynthesizer::Progress callback = std::bind(&SynthesizerThread::progress, this, std::placeholders::_1);
        if (target && target->synthesisContext)
            synthesizeSurface(*target->synthesisContext, callback);
    }
    emit onFinish();
}

} // namespace Velmor
