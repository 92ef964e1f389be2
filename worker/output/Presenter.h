#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "worker/output/OutputDevice.h"
#include "worker/output/Pacer.h"

namespace Morvane::Worker {

/// Shows frames at a mode's rate on a thread of its own, so that the request thread only converts.
///
/// Between the two lies a short queue. While it is full `submit` waits: a sender faster than the rate is held
/// to the rate. A frame whose time is over when it arrives, or when its turn comes, is dropped and counted,
/// which lets a sender that fell behind catch up. So that a sender that is always too slow still shows
/// something, no frame is dropped when nothing has been shown for half a second.
///
/// A pause asked for at the device holds the clock: the queue fills, the sender waits, nothing becomes late.
class Presenter {
public:
    using OpenPort = std::function<std::unique_ptr<OutputPort>()>;

    enum class Outcome {
        Taken,  ///< shown in its time, or dropped and counted
        Closed  ///< the person closed the device; it takes no more
    };

    struct Counts {
        std::int64_t shown = 0;
        std::int64_t dropped = 0;
    };

    /// How long to wait for something better. The defaults are what a person wants; tests take others.
    struct Patience {
        /// The first frame waits so long for others, so that the clock does not start with an empty queue.
        std::chrono::milliseconds start{200};
        /// A late frame is shown all the same when nothing has been shown for so long.
        std::chrono::milliseconds picture{500};
    };

    /// Calls `open` on the presentation thread and waits for it; throws what `open` throws.
    Presenter(OutputMode::Rate rate, OpenPort open, Patience patience);
    Presenter(OutputMode::Rate rate, OpenPort open);

    /// Gives up the frames that wait in the queue.
    ~Presenter();
    Presenter(const Presenter&) = delete;
    Presenter& operator=(const Presenter&) = delete;

    /// Converts `rgba` (see OutputPort::convert) and queues it; the pixels are free again on return. Blocks
    /// while the queue is full, during a pause as long as it lasts. Throws StatusError, from then on every
    /// time, once the device has failed or `abandon` was called. Request thread.
    Outcome submit(const float* rgba);

    /// Shows what is queued, each frame for its whole time, and closes the port. Throws StatusError when the
    /// device failed and no `submit` has told it. Only `counts` may be called afterwards. Request thread.
    void finish();

    /// Makes `submit` and `finish`, running or to come, return without waiting. Any thread.
    void abandon();

    Counts counts() const;

private:
    struct FreeMemory {
        void operator()(std::uint8_t* memory) const { std::free(memory); }
    };
    using Picture = std::unique_ptr<std::uint8_t, FreeMemory>;

    struct QueuedFrame {
        std::int64_t number;
        Picture picture;
        bool prepared = false;
    };

    void run(std::promise<void> opened);
    void openPort();
    void present();
    void endPort();
    void obey(PortEvent event);
    bool presentNext(std::unique_lock<std::mutex>& lock);
    bool isOver(Pacer::Clock::time_point now) const;
    Pacer::Clock::time_point timeOfFront(Pacer::Clock::time_point now);
    void prepareFront(std::unique_lock<std::mutex>& lock);
    void showFront(std::unique_lock<std::mutex>& lock);
    void dropFront();
    bool mustDrop(std::int64_t frame, Pacer::Clock::time_point now) const;
    Picture takeFreePicture(std::unique_lock<std::mutex>& lock);
    void wait(std::unique_lock<std::mutex>& lock, Pacer::Clock::time_point until);

    OpenPort open;
    const Patience patience;
    std::unique_ptr<OutputPort> port;

    mutable std::mutex mutex;  ///< guards everything below
    std::condition_variable changed;
    Pacer pacer;
    std::deque<QueuedFrame> queue;
    std::vector<Picture> freePictures;
    std::int64_t nextNumber = 0;
    Pacer::Clock::time_point firstArrival;
    Pacer::Clock::time_point lastShown;
    Counts counts_;
    bool paused = false;
    int steps = 0;            ///< frames that are to be shown although paused
    bool converting = false;  ///< the request thread is using the port
    bool finishing = false;
    bool closed = false;
    bool abandoned = false;
    std::exception_ptr failure;
    bool failureTold = false;

    std::thread thread;
};

}  // namespace Morvane::Worker
