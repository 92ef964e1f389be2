#include "worker/encode/FrameQueue.h"

namespace Morvane::Worker {

bool FrameQueue::waitForRoom() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return closed || frames.size() < most; });
    return !closed;
}

void FrameQueue::put(FramePointer frame) {
    const std::lock_guard lock(mutex);
    if (closed)
        return;
    frames.push_back(std::move(frame));
    changed.notify_all();
}

std::optional<FrameQueue::Entry> FrameQueue::take() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return closed || ended || !frames.empty(); });
    if (frames.empty())
        return std::nullopt;
    Entry entry = {next++, std::move(frames.front())};
    frames.pop_front();
    changed.notify_all();
    return entry;
}

void FrameQueue::end() {
    const std::lock_guard lock(mutex);
    ended = true;
    changed.notify_all();
}

void FrameQueue::close() {
    const std::lock_guard lock(mutex);
    closed = true;
    frames.clear();
    changed.notify_all();
}

bool FrameQueue::isClosed() {
    const std::lock_guard lock(mutex);
    return closed;
}

}  // namespace Morvane::Worker
