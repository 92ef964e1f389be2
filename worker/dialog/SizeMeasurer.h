#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "worker/dialog/DialogInterface.h"

namespace Morvane::Worker {

/// Measures, on a thread of its own, how large a minute becomes; of several wishes only the last one counts.
class SizeMeasurer {
public:
    /// `told` gets the bytes a minute, or nothing; on this object's thread.
    using Told = std::function<void(const DialogState& state, std::optional<double> bytes)>;

    SizeMeasurer(const DialogModel& model, Told told);
    /// Waits for a measurement that is under way.
    ~SizeMeasurer();
    SizeMeasurer(const SizeMeasurer&) = delete;
    SizeMeasurer& operator=(const SizeMeasurer&) = delete;

    void measure(const DialogState& state);

private:
    void run();

    const DialogModel& model;
    const Told told;
    std::mutex mutex;
    std::condition_variable changed;
    std::optional<DialogState> wanted;
    bool ended = false;
    std::thread thread;
};

}  // namespace Morvane::Worker
