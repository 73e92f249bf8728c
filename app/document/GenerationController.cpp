#include "GenerationController.h"

#include "ImageSynthesizer.h"
#include "LayeredImage.h"
#include "ProgressThrottle.h"
#include "ProjectDocument.h"
#include "SurfaceSynthesisContext.h"
#include "SynthesizerThread.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>

namespace {
using Params = Velmor::ImageSynthesizer::ImageSynthesizerParams;

int64_t steadyMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}
} // namespace

GenerationController::GenerationController(ProjectDocument* document, QObject* parent)
    : QObject(parent)
    , document(document)
    , clock(steadyMs)
{
    qRegisterMetaType<Velmor::ProjectData::SurfaceData*>();
    // The run reads the store that is about to go.
    connect(document, &ProjectDocument::projectAboutToBeReplaced, this, &GenerationController::stopNow);
    if (QCoreApplication* application = QCoreApplication::instance())
        connect(application, &QCoreApplication::aboutToQuit, this, &GenerationController::stopNow);
}

GenerationController::~GenerationController()
{
    if (thread) {
        thread->disconnect(this);
        thread->cancel();
        thread->wait();
        delete thread;
    }
}

void GenerationController::setClock(Clock replacement)
{
    clock = replacement ? std::move(replacement) : Clock(steadyMs);
}

bool GenerationController::start(SurfaceData* surface)
{
    if (thread || !surface || !surface->synthesisContext || document->isReadOnly())
        return false;
    runSurface = surface;
    cancelling = false;
    shown = 0;
    latest = 0;
    startMs = clock();
    endMs = -1;
    previewMs = startMs;
    // The run may replace the output; nobody reads it until the run says so.
    if (Velmor::ImageSynthesizer* synthesizer = surface->synthesizer())
        synthesizer->targetReady = false;

    thread = new Velmor::SynthesizerThread(surface);
    connect(thread, &Velmor::SynthesizerThread::onProgress, this, &GenerationController::onGenerationProgress);
    connect(thread, &Velmor::SynthesizerThread::onFinish, this, &GenerationController::onGenerationFinished);
    // A cancelled run ends when its thread has stopped; its onFinish is not
    // listened to any more.
    Velmor::SynthesizerThread* started = thread;
    connect(thread, &QThread::finished, this, [this, started] {
        if (thread == started && cancelling)
            endRun(true);
    });
    document->setReadOnly(true);
    emit runningChanged(true);
    emit progressChanged(0);
    emit outputChanged(surface);
    thread->start(QThread::InheritPriority);
    return true;
}

void GenerationController::cancel()
{
    if (!thread || cancelling)
        return;
    cancelling = true;
    disconnect(thread, &Velmor::SynthesizerThread::onProgress, this, &GenerationController::onGenerationProgress);
    disconnect(thread, &Velmor::SynthesizerThread::onFinish, this, &GenerationController::onGenerationFinished);
    thread->cancel();
}

int64_t GenerationController::elapsedMs() const
{
    if (!runSurface)
        return 0;
    return (endMs >= 0 ? endMs : clock()) - startMs;
}

int64_t GenerationController::remainingMs() const
{
    if (!thread || latest <= 0)
        return -1;
    if (latest >= 100)
        return 0;
    return elapsedMs() * (100 - latest) / latest;
}

void GenerationController::onGenerationProgress(int value)
{
    if (!thread || cancelling)
        return;
    latest = value;
    const int64_t now = clock();
    if (!ProgressThrottle::accept(now))
        return;
    shown = value;
    markOutputReady(false);
    emit progressChanged(value);
    emit needRedraw();
    followInPreview(now);
}

void GenerationController::onGenerationFinished()
{
    // A finish queued before a cancel was asked for still arrives here.
    if (!thread || cancelling)
        return;
    endRun(false);
}

void GenerationController::endRun(bool wasCancelled)
{
    // onFinish is the last thing the run does; the thread returns at once.
    thread->wait();
    thread->disconnect(this);
    thread->deleteLater();
    thread = nullptr;
    endMs = clock();
    markOutputReady(true);
    if (!wasCancelled) {
        shown = 100;
        latest = 100;
        emit progressChanged(100);
    }
    cancelling = false;
    document->setReadOnly(false);
    emit runningChanged(false);
    emit outputChanged(runSurface);
    emit needRedraw();
    emit finished(runSurface, wasCancelled);
}

void GenerationController::stopNow()
{
    if (!thread)
        return;
    cancel();
    thread->wait();
    endRun(true);
    // The surface belongs to the project being replaced.
    runSurface = nullptr;
}

void GenerationController::followInPreview(int64_t now)
{
    // The preview copies and uploads every layer at full size on each
    // refresh: about a second for four 2048 x 2048 layers in software GL,
    // time the GUI thread cannot answer a click.
    const Params* params = runSurface->synthesizer() ? runSurface->synthesizer()->params : nullptr;
    const double pixels = params ? double(params->targetWidth) * params->targetHeight : 0.0;
    const int64_t interval = std::max<int64_t>(ProgressThrottle::intervalMs,
                                               int64_t(ProgressThrottle::intervalMs * pixels / (512.0 * 512.0)));
    if (now - previewMs < interval)
        return;
    previewMs = now;
    emit outputChanged(runSurface);
}

void GenerationController::markOutputReady(bool runEnded)
{
    Velmor::ImageSynthesizer* synthesizer = runSurface ? runSurface->synthesizer() : nullptr;
    if (!synthesizer)
        return;
    // While the run goes on, the output is stable only once this synthesizer
    // itself is growing it (a seam repair or a mixed phase comes first).
    const bool growing = runEnded || runSurface->synthesisContext->currentSynthesizer.load() == synthesizer;
    if (growing && synthesizer->target && !synthesizer->target->layers.empty())
        synthesizer->targetReady = true;
}
