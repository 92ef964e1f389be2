#include "host/farm/ChunkPlan.h"

#include <algorithm>

#include "host/images/FrameRange.h"

namespace Corvel {
namespace {

/// The input's frames in the order in which the movie shows them, each once.
std::vector<int> shownOnce(const std::vector<PlannedFrame>& plan, int hold) {
    std::vector<int> shown;
    for (std::size_t i = 0; i < plan.size(); i += static_cast<std::size_t>(hold)) {
        shown.push_back(plan[i].shown);
    }
    return shown;
}

FarmChunk chunkOf(std::vector<int> shown, int hold) {
    const int count = static_cast<int>(shown.size()) * hold;
    std::sort(shown.begin(), shown.end());
    return {frameRangeText(shown), count};
}

}  // namespace

int framesOf(const FrameSource& source, const RenderRequest& request) {
    return static_cast<int>(planFrames(source, request.frames, request.missing, request.order).size());
}

std::vector<FarmChunk> planChunks(const FrameSource& source, const RenderRequest& request, int framesEach) {
    const int hold = request.order.hold;
    const std::vector<int> shown =
        shownOnce(planFrames(source, request.frames, request.missing, request.order), hold);
    const auto each = static_cast<std::size_t>(std::max(1, framesEach / hold));
    std::vector<std::vector<int>> parts;
    bool real = true;  // whether the last part has a frame of the source's
    for (std::size_t i = 0; i < shown.size(); ++i) {
        if (parts.empty() || (parts.back().size() >= each && real)) {
            parts.emplace_back();
            real = false;
        }
        parts.back().push_back(shown[i]);
        real = real || source.has(shown[i]);
    }
    if (!real && parts.size() > 1) {
        std::vector<int>& before = parts[parts.size() - 2];
        before.insert(before.end(), parts.back().begin(), parts.back().end());
        parts.pop_back();
    }
    std::vector<FarmChunk> chunks;
    chunks.reserve(parts.size());
    for (std::vector<int>& part : parts) {
        chunks.push_back(chunkOf(std::move(part), hold));
    }
    return chunks;
}

}  // namespace Corvel
