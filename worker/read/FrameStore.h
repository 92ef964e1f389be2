#pragma once

#include <condition_variable>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "worker/Status.h"
#include "worker/read/FrameDecoder.h"
#include "worker/read/FrameIndex.h"

namespace Morvane::Worker {

/// Gives any frame of a movie, quickly in whatever order a host asks. A thread of its own decodes: forwards
/// it stays ahead of the host and never goes back; backwards each group of pictures is decoded once and kept
/// while the host walks down through it; a jump decodes just what the frame needs. What is kept is bounded in
/// bytes.
///
/// One thread at a time asks.
class FrameStore {
public:
    /// Opens the movie again. `frameIndex` must be its, not empty; both must outlive the store. Throws as
    /// FrameDecoder.
    FrameStore(const MovieInput& movie, const FrameIndex& frameIndex,
               std::size_t budgetBytes = defaultBudget);
    ~FrameStore();
    FrameStore(const FrameStore&) = delete;
    FrameStore& operator=(const FrameStore&) = delete;

    /// Frame `number`, counted from 0, as the codec gives it. Blocks until it is decoded. The picture must
    /// not be written to. Throws StatusError: CodecFailed for a frame that is damaged or lies beyond where
    /// the file has been cut, naming it; InputOutput where the file cannot be read. REQUIRES: number <
    /// frameCount of the index.
    std::shared_ptr<const AVFrame> frame(std::size_t number);

    /// Lets a running `frame` return early, by a StatusError. Any thread.
    void interrupt();

    static constexpr std::size_t defaultBudget = std::size_t{512} << 20;

private:
    /// How the host has been asking.
    enum class Direction { None, Forward, Backward };

    using Frames = std::map<std::size_t, std::shared_ptr<const AVFrame>>;

    /// Decoding from one key packet on.
    struct Run {
        bool active = false;
        std::size_t start = 0;       ///< packet that it began with
        std::size_t nextNumber = 0;  ///< one more than the highest frame that has come out
    };

    void follow(std::size_t number);
    void decode();
    bool hasWork() const;
    bool isWantedMissing() const;
    bool isAheadEnough() const;
    std::optional<std::size_t> takeNewStart();
    std::optional<std::size_t> lastPacketNeeded() const;
    void decodeOne(std::unique_lock<std::mutex>& lock);
    void keep(DecodedFrame decoded);
    void evict();
    void drop(Frames::iterator frame);
    void giveUpIfMissing();

    const FrameIndex& index;
    const std::string path;  ///< for messages
    const std::size_t budget;
    FrameDecoder decoder;  // of the decoding thread only, once that runs

    std::mutex mutex;  // guards everything below
    std::condition_variable changed;
    Frames frames;
    std::size_t heldBytes = 0;
    std::size_t anchor = 0;  ///< the frame that was asked for last
    bool asked = false;      ///< somebody waits for it
    unsigned questions = 0;  ///< how often somebody has asked
    bool decided = false;    ///< where decoding leads to the anchor
    Direction direction = Direction::Forward;
    Run run;
    std::optional<StatusError> failure;    ///< why the anchor does not come
    std::optional<std::size_t> restartAt;  ///< the anchor did not come and is tried for from here
    bool stopping = false;

    std::thread thread;
};

}  // namespace Morvane::Worker
