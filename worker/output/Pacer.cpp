#include "worker/output/Pacer.h"

namespace Morvane::Worker {

Pacer::Pacer(OutputMode::Rate rate) : rate(rate) {}

void Pacer::start(Clock::time_point moment, std::int64_t frame) {
    running = true;
    startMoment = moment;
    startFrame = frame;
}

Pacer::Clock::time_point Pacer::due(std::int64_t frame) const {
    // Whole seconds apart from the rest, so that days of frames times the nanoseconds of a second do not
    // overflow.
    const std::int64_t ticks = (frame - startFrame) * rate.seconds;
    const std::chrono::seconds whole(ticks / rate.frames);
    const std::chrono::nanoseconds rest(ticks % rate.frames * 1'000'000'000 / rate.frames);
    return startMoment + whole + rest;
}

bool Pacer::isLate(std::int64_t frame, Clock::time_point now) const {
    return running && now >= due(frame + 1);
}

}  // namespace Morvane::Worker
