#include "worker/dialog/SizeMeasurer.h"

#include <utility>

namespace Morvane::Worker {

SizeMeasurer::SizeMeasurer(const DialogModel& dialogModel, Told listener)
    : model(dialogModel), told(std::move(listener)) {
    thread = std::thread([this] { run(); });
}

SizeMeasurer::~SizeMeasurer() {
    {
        const std::lock_guard lock(mutex);
        ended = true;
    }
    changed.notify_all();
    thread.join();
}

void SizeMeasurer::measure(const DialogState& state) {
    {
        const std::lock_guard lock(mutex);
        wanted = state;
    }
    changed.notify_all();
}

void SizeMeasurer::run() {
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return ended || wanted; });
        if (ended)
            return;
        const DialogState state = *std::exchange(wanted, std::nullopt);
        lock.unlock();
        const std::optional<double> bytes = model.bytesPerMinute(state);
        told(state, bytes);
        lock.lock();
    }
}

}  // namespace Morvane::Worker
