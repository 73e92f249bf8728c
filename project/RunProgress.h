#pragma once

#include "ImageSynthesizer.h"

#include <algorithm>
#include <memory>

namespace Velmor {

// Turns the progress of the passes and phases of one run into a single bar
// that only moves forward: each stage reports 0..100 of its own, which is
// mapped into the stage's share of the run, and only increases of the whole
// are passed on (deliberately one bar per run rather than one per pass, so
// that it never jumps back when the next pass starts). Stages nest: a stage callback can feed another RunProgress.
class RunProgress
{
public:
    explicit RunProgress(ImageSynthesizer::Progress overall)
        : state(std::make_shared<State>(State{std::move(overall), -1}))
    {
    }

    // The callback for a stage covering [first, last] percent of the run.
    // Empty when the run reports no progress.
    ImageSynthesizer::Progress stage(int first, int last) const
    {
        if (!state->overall)
            return {};
        return [state = state, first, last](int percent) {
            const int local = std::clamp(percent, 0, 100);
            const int value = first + (last - first) * local / 100;
            if (value > state->reported) {
                state->reported = value;
                state->overall(value);
            }
        };
    }

private:
    struct State
    {
        ImageSynthesizer::Progress overall;
        int reported;
    };
    // Shared with the stage callbacks, which synthesizers copy.
    std::shared_ptr<State> state;
};

} // namespace Velmor
