#include "host/render/FrameOrder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "host/render/Failure.h"

namespace Corvel {
namespace {

constexpr std::int64_t mostFrames = 10'000'000;

void refuseTooMany(std::int64_t frames) {
    if (frames > mostFrames) {
        throw Failure(Exit::Usage, fmt::format("{} frames are more than {}", frames, mostFrames));
    }
}

// Frames in front of the first one or behind the last one, or so many fewer.
void addHandles(std::vector<int>& frames, const FrameOrder& order) {
    const std::int64_t first = std::int64_t{frames.front()} - order.before;
    const std::int64_t last = std::int64_t{frames.back()} + order.after;
    refuseTooMany(static_cast<std::int64_t>(frames.size()) + std::max(order.before, 0) +
                  std::max(order.after, 0));
    if (first < std::numeric_limits<int>::min() || last > std::numeric_limits<int>::max()) {
        throw Failure(Exit::Usage, "the handles reach beyond the frame numbers that there are");
    }
    frames.erase(std::remove_if(frames.begin(), frames.end(),
                                [&](int frame) { return frame < first || frame > last; }),
                 frames.end());
    if (frames.empty()) {
        throw Failure(Exit::Usage, fmt::format("nothing is left once handles of {} and {} frames are cut off",
                                               -order.before, -order.after));
    }
    std::vector<int> more;
    for (std::int64_t frame = first; frame < frames.front() && order.before > 0; ++frame) {
        more.push_back(static_cast<int>(frame));
    }
    frames.insert(frames.begin(), more.begin(), more.end());
    while (order.after > 0 && frames.back() < last) {
        frames.push_back(frames.back() + 1);
    }
}

}  // namespace

std::vector<int> shownFrames(std::vector<int> frames, const FrameOrder& order) {
    addHandles(frames, order);
    const std::int64_t first = frames.front();
    frames.erase(std::remove_if(frames.begin(), frames.end(),
                                [&](int frame) { return (frame - first) % order.step != 0; }),
                 frames.end());
    refuseTooMany(static_cast<std::int64_t>(frames.size()) * order.hold);
    return frames;
}

std::vector<OrderedFrame> inOrder(const std::vector<int>& shown, const FrameOrder& order) {
    std::vector<OrderedFrame> frames;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const int input = order.reverse ? shown[shown.size() - 1 - i] : shown[i];
        for (int time = 0; time < order.hold; ++time) {
            const int number =
                order.hold == 1 ? shown[i] : shown.front() + static_cast<int>(i) * order.hold + time;
            frames.push_back({number, input});
        }
    }
    return frames;
}

}  // namespace Corvel
