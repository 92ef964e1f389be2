#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

struct AVPacket;

namespace Morvane::Worker {

class MovieInput;

/// Where every frame of a movie is: its packets in the order in which they are decoded, and for every frame,
/// in the order in which frames are shown, the packet that it comes from. Built once, from the packets' times
/// alone; nothing is decoded. Times are those of the picture track's time base. Immutable, so any thread may
/// read it.
class FrameIndex {
public:
    /// What stays the same when a packet is read again: where it lies and, in formats where edits can show
    /// the same bytes twice, when.
    struct Identity {
        std::int64_t position;
        std::int64_t size;
        std::int64_t time;

        bool operator<(const Identity& other) const {
            return std::tie(position, size, time) < std::tie(other.position, other.size, other.time);
        }
    };

    struct Packet {
        Identity identity;
        std::int64_t seekTime;     ///< finds the packet, or one before it
        std::int64_t showingTime;  ///< rises with the order in which frames are shown
        bool key;                  ///< decoding can start here
        bool shown;  ///< gives a frame that belongs to the movie; what an edit list cuts away is decoded only
    };

    /// Lists the packets of the movie, which it opens again. Throws StatusError as MovieInput.
    static FrameIndex ofMovie(const MovieInput& movie);

    /// The identity of a packet that has been read again from `input`.
    static Identity identify(const MovieInput& input, const AVPacket& packet);

    /// `listed` in decoding order.
    explicit FrameIndex(std::vector<Packet> listed);

    std::size_t frameCount() const { return frames.size(); }
    std::size_t packetCount() const { return packets.size(); }
    const Packet& packet(std::size_t position) const { return packets[position]; }

    /// The packet that frame `frame` comes from. REQUIRES: frame < frameCount().
    std::size_t packetOfFrame(std::size_t frame) const { return frames[frame]; }

    /// The frame that comes from the packet, nothing for one that is not shown.
    std::optional<std::size_t> frameOfPacket(std::size_t position) const;

    /// The latest key packet from which `frame` can be decoded: it neither comes after the frame's packet nor
    /// is shown after the frame, since a frame shown before the key frame that it follows in the file needs
    /// earlier ones too. The first packet where there is no such key.
    std::size_t startFor(std::size_t frame) const;

    /// The latest key packet before `position`; the first packet where there is none.
    std::size_t keyBefore(std::size_t position) const;

    /// The packet of that identity; nothing for one that is unknown, or not the only one of its identity.
    std::optional<std::size_t> find(const Identity& identity) const;

private:
    std::vector<Packet> packets;
    std::vector<std::size_t> frames;       ///< of each frame, in showing order: position of its packet
    std::vector<std::size_t> frameNumber;  ///< of each packet: its frame, or the number of frames
    std::vector<std::size_t> byIdentity;   ///< positions of all packets, sorted by identity
};

}  // namespace Morvane::Worker
