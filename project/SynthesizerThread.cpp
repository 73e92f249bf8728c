#include "SynthesizerThread.h"

#include "SurfaceSynthesis.h"
#include "SurfaceSynthesisContext.h"

#include <functional>

namespace Velmor {

SynthesizerThread::SynthesizerThread(ProjectData::SurfaceData* surface, QObject* parent)
    : QThread(parent)
    , target(surface)
{
}

void SynthesizerThread::progress(int value)
{
    // The run clears the context's flag when it starts; a cancel that came
    // just before that is sent again here.
    if (cancelled && target && target->synthesisContext && !target->synthesisContext->cancelRequested)
        requestCancel(*target->synthesisContext);
    emit onProgress(value);
}

void SynthesizerThread::cancel()
{
    cancelled = true;
    if (target && target->synthesisContext)
        requestCancel(*target->synthesisContext);
}

void SynthesizerThread::run()
{
    if (!cancelled) {
        const ImageSynthesizer::Progress callback = std::bind(&SynthesizerThread::progress, this, std::placeholders::_1);
        if (target && target->synthesisContext)
            synthesizeSurface(*target->synthesisContext, callback);
    }
    emit onFinish();
}

} // namespace Velmor
