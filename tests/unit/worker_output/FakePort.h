#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "worker/output/OutputDevice.h"

namespace Morvane::Worker {

/// What a test and the port of its device have in common: the test asks and steers here while the port lives
/// and after it. A picture of this device is the first float of its frame, as a byte.
class FakePortControl {
public:
    struct Shown {
        std::int64_t frame;
        std::uint8_t picture;

        friend bool operator==(const Shown&, const Shown&) = default;
    };

    /// Makes the port report `event` when it is asked next.
    void press(PortEvent event) {
        const std::lock_guard guard(mutex);
        events.push_back(event);
    }

    /// Makes `show` wait from now on, until `letShow`.
    void holdShow() {
        const std::lock_guard guard(mutex);
        held = true;
    }

    void letShow() {
        const std::lock_guard guard(mutex);
        held = false;
        changed.notify_all();
    }

    /// Makes every `show` from now on throw `failure`.
    void failShow(const std::exception_ptr& failure) {
        const std::lock_guard guard(mutex);
        showFailure = failure;
    }

    /// Blocks until `show` has been entered `count` times.
    void awaitShows(std::size_t count) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return shown.size() >= count; });
    }

    /// Blocks until `prepare` has been called `count` times.
    void awaitPrepared(std::size_t count) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return prepared.size() >= count; });
    }

    /// Blocks until every event has been taken.
    void awaitNoEvents() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return events.empty(); });
    }

    std::vector<std::int64_t> allPrepared() {
        const std::lock_guard guard(mutex);
        return prepared;
    }

    std::vector<Shown> allShown() {
        const std::lock_guard guard(mutex);
        return shown;
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<PortEvent> events;
    bool held = false;
    std::exception_ptr showFailure;
    std::vector<std::int64_t> prepared;
    std::vector<Shown> shown;
    int finished = 0;
    int alive = 0;
    std::thread::id openedOn;
    std::thread::id destroyedOn;
};

class FakePort : public OutputPort {
public:
    explicit FakePort(FakePortControl& control) : control(control) {
        const std::lock_guard guard(control.mutex);
        ++control.alive;
        control.openedOn = std::this_thread::get_id();
    }

    ~FakePort() override {
        const std::lock_guard guard(control.mutex);
        --control.alive;
        control.destroyedOn = std::this_thread::get_id();
    }

    std::size_t pictureBytes() const override { return 1; }

    void convert(const float* rgba, std::uint8_t* picture) override {
        *picture = static_cast<std::uint8_t>(rgba[0]);
    }

    void prepare(const std::uint8_t* /*picture*/, std::int64_t frame) override {
        const std::lock_guard guard(control.mutex);
        control.prepared.push_back(frame);
        control.changed.notify_all();
    }

    void show(const std::uint8_t* picture) override {
        std::unique_lock lock(control.mutex);
        if (control.showFailure)
            std::rethrow_exception(control.showFailure);
        control.shown.push_back({control.prepared.back(), *picture});
        control.changed.notify_all();
        control.changed.wait(lock, [this] { return !control.held; });
    }

    PortEvent nextEvent() override {
        const std::lock_guard guard(control.mutex);
        if (control.events.empty())
            return PortEvent::None;
        const PortEvent event = control.events.front();
        control.events.pop_front();
        control.changed.notify_all();
        return event;
    }

    void finish() override {
        const std::lock_guard guard(control.mutex);
        ++control.finished;
    }

private:
    FakePortControl& control;
};

}  // namespace Morvane::Worker
