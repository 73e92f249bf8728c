#pragma once

#include "ProjectData.h"

#include <QThread>

#include <atomic>

namespace Velmor {

// Runs one surface synthesis off the GUI thread. It holds no synthesis state
// of its own: the surface's synthesis context carries the result, the cancel
// flag and the running synthesizer. onProgress and onFinish are emitted from
// the worker thread, so receivers on the GUI thread get them queued;
// onFinish comes once per run, also after a cancel.
class SynthesizerThread : public QThread
{
    Q_OBJECT
public:
    explicit SynthesizerThread(ProjectData::SurfaceData* surface, QObject* parent = nullptr);

    // The progress callback of the run: emits onProgress(value).
    void progress(int value);
    // Asks the run to stop soon; callable from any thread. The thread keeps
    // running until the synthesizer notices, then emits onFinish as usual.
    void cancel();

    ProjectData::SurfaceData* surface() const { return target; }

signals:
    void onProgress(int value);
    void onFinish();

protected:
    void run() override;

private:
    ProjectData::SurfaceData* target = nullptr;
    // Set by cancel(), also before the run begins, which then runs nothing.
    std::atomic<bool> cancelled{false};
};

} // namespace Velmor
