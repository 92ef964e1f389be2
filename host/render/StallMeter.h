#pragma once

#include <chrono>
#include <optional>

namespace Corvel {

/// Judges how long a helper has given no sign of life while somebody waits for it: when that is worth a
/// message, and when patience ends. A function of the times it is told; no clock of its own.
class StallMeter {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Seconds = std::chrono::seconds;

    explicit StallMeter(Time now) : last(now) {}

    /// A sign of life, or the beginning of something new to wait for.
    void progress(Time now);

    /// How long without a sign of life a helper may be; without one, for ever.
    void setTimeout(std::optional<Seconds> newTimeout) { timeout = newTimeout; }

    /// Whole seconds without a sign of life, each time when that is to be reported: after 10 seconds (earlier
    /// where the timeout comes before), then each time it has lasted twice as long.
    std::optional<Seconds> reportDue(Time now);

    /// Whether a report has been made since the last sign of life.
    bool reported() const { return reports > 0; }

    /// Whether the timeout has passed.
    bool timedOut(Time now) const { return timeout && silence(now) >= *timeout; }

    Seconds silence(Time now) const { return std::chrono::duration_cast<Seconds>(now - last); }

private:
    Time last;
    std::optional<Seconds> timeout;
    int reports = 0;
};

}  // namespace Corvel
