#include "host/render/RateMeter.h"

namespace Corvel {

RateMeter::RateMeter(Time start) : times{start} {}

void RateMeter::add(Time now) {
    times.push_back(now);
    if (times.size() > window + 1) {
        times.pop_front();
    }
}

std::optional<double> RateMeter::framesPerSecond() const {
    const double seconds = std::chrono::duration<double>(times.back() - times.front()).count();
    if (times.size() < 2 || seconds <= 0) {
        return std::nullopt;
    }
    return static_cast<double>(times.size() - 1) / seconds;
}

std::optional<double> RateMeter::secondsFor(int frames) const {
    const std::optional<double> rate = framesPerSecond();
    return rate ? std::optional(frames / *rate) : std::nullopt;
}

}  // namespace Corvel
