#pragma once

#include "worker/movie/AtomWriter.h"
#include "worker/movie/MovieTracks.h"
#include "worker/movie/TimeScale.h"

extern "C" {
#include <libavcodec/packet.h>
#include <libavformat/avformat.h>
}

#include <exception>
#include <functional>
#include <memory>

namespace Morvane::Worker {

/// libav's QuickTime muxer, used for what it knows: the sample description of every codec and the form in
/// which its packets are stored. It keeps packets until `flush` and then hands out one whole fragment, a
/// `moof` and an `mdat` atom whose offsets count from the `moof`, so that the fragment can stand anywhere in
/// a file.
class FragmentMuxer {
public:
    /// Takes the next bytes of the atoms; what it throws comes out of the call that led to it.
    using Sink = std::function<void(ByteView)>;

    /// Throws StatusError (NotSupportedByCodec) for a codec that QuickTime movies cannot hold.
    FragmentMuxer(const VideoTrack& track, TimeScale scale, Sink sink);
    FragmentMuxer(const FragmentMuxer&) = delete;
    FragmentMuxer& operator=(const FragmentMuxer&) = delete;

    /// The packets that may be kept at most.
    static constexpr int mostPackets = 1000;

    /// Keeps one packet, times in frames. REQUIRES: fewer than mostPackets since the last flush. Throws
    /// StatusError (CodecFailed) for one that does not fit.
    void add(const AVPacket& packet);
    /// Writes what is kept. The very first time `ftyp` and `moov` come out, without the packets, since some
    /// descriptions need one; a second flush brings these.
    void flush();

private:
    struct FreeFormat {
        void operator()(AVFormatContext* context) const;
    };
    struct FreePacket {
        void operator()(AVPacket* packet) const;
    };

    static int writeBytes(void* self, std::uint8_t* bytes, int count);
    void check(int result, const char* what);

    Sink sink;
    TimeScale scale;
    std::exception_ptr sinkFailure;
    std::unique_ptr<AVFormatContext, FreeFormat> format;
    std::unique_ptr<AVPacket, FreePacket> held;
};

}  // namespace Morvane::Worker
