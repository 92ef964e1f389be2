#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "worker/LibavPointers.h"
#include "worker/picture/BufferPool.h"
#include "worker/read/FrameIndex.h"
#include "worker/read/MovieInput.h"

namespace Morvane::Worker {

/// A frame as the codec gives it, and which of the movie's frames it is.
struct DecodedFrame {
    FramePointer picture;
    std::size_t number;
};

/// Decodes a movie's pictures one after the other, from any key packet on. Damage in the file is no failure
/// here: a frame that cannot be decoded just does not come. One thread at a time; libav decodes on threads of
/// its own.
class FrameDecoder {
public:
    /// Opens the movie again. `frameIndex` must be its, not empty; both must outlive the decoder. Throws
    /// StatusError: as MovieInput; CodecFailed where the codec is unknown or cannot be opened.
    FrameDecoder(const MovieInput& movieInput, const FrameIndex& frameIndex);

    /// Goes on from the packet at `position`, a key packet or the first. Throws StatusError (InputOutput)
    /// where the file cannot be read there.
    void startAt(std::size_t position);

    /// The packet that is decoded next.
    std::size_t position() const { return nextPacket; }

    /// Whether `next` has stopped at a `lastPacket`, so that nothing after it comes until `startAt`.
    bool hasStopped() const { return draining && !atEnd; }

    /// The next frame in showing order; nothing at the end of the movie. Where `lastPacket` is given, no
    /// packet after it is decoded, and nothing comes when all frames up to there have come. After nothing,
    /// only `startAt` goes on.
    std::optional<DecodedFrame> next(std::optional<std::size_t> lastPacket = std::nullopt);

    /// Whether every packet is a picture of its own.
    bool isIntraOnly() const;

private:
    bool goTo(std::size_t position);
    bool matchFirstPacket(std::size_t position);
    void feed(std::size_t lastPacket);
    void drain();
    std::optional<DecodedFrame> take();
    std::optional<std::size_t> wholeFrame(const AVFrame& picture) const;

    const MovieInput& movie;
    const FrameIndex& index;
    std::unique_ptr<MovieInput> input;
    BufferPool pictures;
    CodecPointer decoder;
    PacketPointer packet;
    bool hasPacket = false;  ///< `packet` is the one at `nextPacket`, read already
    std::size_t nextPacket = 0;
    std::int64_t firstTime = 0;  ///< frames shown earlier are not whole
    bool draining = false;       ///< nothing more goes in
    bool atEnd = false;          ///< because the file has no more
};

}  // namespace Morvane::Worker
