#include "host/render/FramePlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "host/images/FrameRange.h"
#include "host/render/Failure.h"

namespace Corvel {
namespace {

void refuseGaps(const FrameSource& source, const std::vector<int>& wanted) {
    std::vector<int> gaps;
    std::copy_if(wanted.begin(), wanted.end(), std::back_inserter(gaps),
                 [&](int number) { return !source.has(number); });
    if (gaps.empty()) {
        return;
    }
    throw Failure(
        Exit::InputUnreadable,
        fmt::format("frame{} {} {} missing (there is {}); --missing black or hold fills gaps, --frames names "
                    "the frames that are wanted",
                    gaps.size() == 1 ? "" : "s", frameRangeText(gaps), gaps.size() == 1 ? "is" : "are",
                    frameRangeText(source.frames())));
}

int heldFrame(const std::vector<int>& there, int number) {
    const auto later = std::upper_bound(there.begin(), there.end(), number);
    return later == there.begin() ? there.front() : *(later - 1);
}

}  // namespace

std::vector<PlannedFrame> planFrames(const FrameSource& source, std::vector<int> wanted, Missing missing,
                                     const FrameOrder& order) {
    const std::vector<int>& there = source.frames();
    if (wanted.empty()) {
        wanted = parseFrameRange(fmt::format("{}-{}", there.front(), there.back()));
    }
    wanted = shownFrames(std::move(wanted), order);
    if (missing == Missing::Error) {
        refuseGaps(source, wanted);
    }
    if (std::none_of(wanted.begin(), wanted.end(), [&](int number) { return source.has(number); })) {
        throw Failure(Exit::InputUnreadable, fmt::format("none of the frames {} is there; there is {}",
                                                         frameRangeText(wanted), frameRangeText(there)));
    }
    std::vector<PlannedFrame> plan;
    for (const auto& [number, shown] : inOrder(wanted, order)) {
        PlannedFrame frame{number, shown, shown};
        if (!source.has(shown)) {
            frame.source = missing == Missing::Hold ? std::optional(heldFrame(there, shown)) : std::nullopt;
        }
        plan.push_back(frame);
    }
    return plan;
}

}  // namespace Corvel
