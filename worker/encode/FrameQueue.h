#pragma once

#include "worker/picture/PicturePool.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

namespace Morvane::Worker {

/// Converted pictures that wait for an encoder; bounded, so that memory is. Usable from any thread.
class FrameQueue {
public:
    struct Entry {
        std::int64_t index;  ///< 0 for the first frame
        FramePointer frame;
    };

    /// `most`: pictures that may wait; at least 1.
    explicit FrameQueue(std::size_t mostWaiting) : most(mostWaiting) {}

    /// Waits until there is room. False after `close`.
    bool waitForRoom();

    /// Adds the next picture. The caller has waited for room.
    void put(FramePointer frame);

    /// The next picture; waits for it. Nothing after `end` once all are taken, and after `close`.
    std::optional<Entry> take();

    /// No more pictures will come.
    void end();

    /// Drops everything; nobody waits any more.
    void close();

    bool isClosed();

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<FramePointer> frames;
    const std::size_t most;
    std::int64_t next = 0;
    bool ended = false;
    bool closed = false;
};

}  // namespace Morvane::Worker
