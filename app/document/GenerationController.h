#pragma once

#include "ProjectData.h"

#include <QObject>

#include <cstdint>
#include <functional>

class ProjectDocument;

namespace Velmor {
class SynthesizerThread;
}

// Runs the synthesis of one surface (or mixed surface) at a time on a
// SynthesizerThread and follows it for the window: the throttled progress
// (ProgressThrottle; 100 at the end), the elapsed time and an estimate of the
// time left. While a thread uses the store the document is read-only; a
// cancelled thread keeps it so until the engine has noticed and the thread
// has stopped, which takes well under a second. No widgets: panels call
// start and cancel and redraw from the signals.
class GenerationController : public QObject
{
    Q_OBJECT
public:
    // Milliseconds on a monotonic clock; replaceable for tests.
    using Clock = std::function<int64_t()>;
    using SurfaceData = Velmor::ProjectData::SurfaceData;

    explicit GenerationController(ProjectDocument* document, QObject* parent = nullptr);
    // Cancels a run still going on and waits for its thread.
    ~GenerationController() override;

    void setClock(Clock clock);

    // Starts a run of `surface`; false (and nothing started) while another
    // thread still runs, while the document is read-only, or without a surface.
    bool start(SurfaceData* surface);
    // Asks the run to stop; the progress shown stays where it was. The end
    // is reported by finished(surface, true) once the thread has stopped.
    void cancel();

    // A thread exists: running, or cancelled and not yet stopped.
    bool isRunning() const { return thread != nullptr; }
    bool isCancelling() const { return cancelling; }
    // The surface of the current or last run.
    SurfaceData* surface() const { return runSurface; }
    // The value the progress bar shows, 0 to 100.
    int shownProgress() const { return shown; }
    // Of the current run, or of the last one once it ended.
    int64_t elapsedMs() const;
    // From the latest progress value (throttled or not); -1 while unknown.
    int64_t remainingMs() const;

public slots:
    void onGenerationProgress(int value);
    void onGenerationFinished();

signals:
    void runningChanged(bool running);
    void progressChanged(int value);
    // The views should repaint the output: throttled progress, end of a run.
    void needRedraw();
    // New output of `surface` exists (for the 3D preview): at the start, at
    // the end, and during a run every 500 ms for outputs up to 512 x 512,
    // proportionally less often for larger ones.
    void outputChanged(Velmor::ProjectData::SurfaceData* surface);
    void finished(Velmor::ProjectData::SurfaceData* surface, bool cancelled);

private:
    // Ends the bookkeeping of a run whose thread has returned.
    void endRun(bool wasCancelled);
    // Stops and waits for a run at once (the project is going away).
    void stopNow();
    // Marks the surface's output readable when its own synthesizer grows it.
    void markOutputReady(bool runEnded);
    // Tells the 3D preview about new output, at most once per interval that
    // grows with the output's size.
    void followInPreview(int64_t now);

    ProjectDocument* document;
    Clock clock;
    Velmor::SynthesizerThread* thread = nullptr;
    SurfaceData* runSurface = nullptr;
    bool cancelling = false;
    int shown = 0;
    int latest = 0;
    int64_t startMs = 0;
    int64_t endMs = -1;
    int64_t previewMs = 0; // when the preview was last told
};

Q_DECLARE_METATYPE(Velmor::ProjectData::SurfaceData*)
