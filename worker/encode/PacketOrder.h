#pragma once

#include "worker/encode/EncoderContext.h"

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>

namespace Morvane::Worker {

/// Packets on their way from several encoding threads to the one that delivers them, put back in order.
/// Bounded: who brings a packet that is not due yet waits while too many are kept. Usable from any thread.
class PacketOrder {
public:
    /// `most`: packets kept at once before their bringers wait; at least 1.
    explicit PacketOrder(std::size_t mostKept) : most(mostKept) {}

    /// Adds packet number `index`; numbers start at 0 and each comes once. Waits for room, without end where
    /// an earlier packet never comes; `close` ends the wait.
    void put(std::int64_t index, PacketPointer packet);

    /// The packet whose turn it is; waits for it. Null after `end` once all are taken, and after `close`.
    PacketPointer take();

    /// No more packets will come.
    void end();

    /// Drops everything; nobody waits any more.
    void close();

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::map<std::int64_t, PacketPointer> waiting;
    const std::size_t most;
    std::int64_t next = 0;
    bool ended = false;
    bool closed = false;
};

}  // namespace Morvane::Worker
