#include "worker/encode/PacketOrder.h"

namespace Morvane::Worker {

void PacketOrder::put(std::int64_t index, PacketPointer packet) {
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return closed || index == next || waiting.size() < most; });
    if (closed)
        return;
    waiting.emplace(index, std::move(packet));
    changed.notify_all();
}

PacketPointer PacketOrder::take() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return closed || waiting.count(next) != 0 || (ended && waiting.empty()); });
    const auto due = closed ? waiting.end() : waiting.find(next);
    if (due == waiting.end())
        return nullptr;
    PacketPointer packet = std::move(due->second);
    waiting.erase(due);
    ++next;
    changed.notify_all();
    return packet;
}

void PacketOrder::end() {
    const std::lock_guard lock(mutex);
    ended = true;
    changed.notify_all();
}

void PacketOrder::close() {
    const std::lock_guard lock(mutex);
    closed = true;
    waiting.clear();
    changed.notify_all();
}

}  // namespace Morvane::Worker
