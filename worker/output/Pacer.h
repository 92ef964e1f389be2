#pragma once

#include <chrono>
#include <cstdint>

#include "worker/output/OutputMode.h"

namespace Morvane::Worker {

/// Says when each frame is due. Every moment is computed from the start and the frame's number, never from
/// the frame before it, so that errors of waking up do not add up and the mean rate is the mode's rate,
/// however long it runs. A plain value; the presenter's lock guards it.
class Pacer {
public:
    using Clock = std::chrono::steady_clock;

    explicit Pacer(OutputMode::Rate rate);

    /// Makes `frame` due at `moment`; all others follow from it. For the first frame and after a pause.
    void start(Clock::time_point moment, std::int64_t frame);

    /// Whether `start` has been called since construction or the last `stop`.
    bool isRunning() const { return running; }

    /// Holds the clock: nothing is due or late until `start`.
    void stop() { running = false; }

    /// When `frame` is due, exact to the nanosecond. The pacer must be running.
    Clock::time_point due(std::int64_t frame) const;

    /// Whether the time of `frame` is over at `now`, that is, the frame after it is due. Never while held.
    bool isLate(std::int64_t frame, Clock::time_point now) const;

private:
    OutputMode::Rate rate;
    bool running = false;
    Clock::time_point startMoment;
    std::int64_t startFrame = 0;
};

}  // namespace Morvane::Worker
