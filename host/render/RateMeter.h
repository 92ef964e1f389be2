#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>

namespace Corvel {

/// How fast frames come, judged by the last ones, so that the time left follows a change of speed.
class RateMeter {
public:
    using Time = std::chrono::steady_clock::time_point;

    explicit RateMeter(Time start);

    /// One more frame is done.
    void add(Time now);

    /// Frames a second; nothing before the first frame.
    std::optional<double> framesPerSecond() const;
    /// Seconds that `frames` more will take; nothing before the first frame.
    std::optional<double> secondsFor(int frames) const;

private:
    static constexpr std::size_t window = 48;  // frames

    std::deque<Time> times;  // of the start or the last frame before the window, then of the window's frames
};

}  // namespace Corvel
