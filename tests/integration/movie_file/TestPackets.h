#pragma once

#include "worker/movie/MovieTracks.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Morvane::Tests {

/// Packets of a libav encoder for movies of any length: a few small pictures are encoded, each of one
/// brightness, and where the codec's pictures stand alone they are repeated.
class TestPackets {
public:
    struct Request {
        std::string encoder = "mjpeg";
        AVPixelFormat pixels = AV_PIX_FMT_YUVJ422P;
        int frames = 24;
        AVRational rate = {24, 1};
        int width = 64;
        int height = 48;
        std::map<std::string, std::string> options;  ///< of the encoder
        std::uint32_t tag = 0;
        AVRational aspect = {1, 1};
        int bitsPerCodedSample = 0;
    };

    explicit TestPackets(const Request& request);

    Worker::VideoTrack track() const;
    /// In decoding order, times in frames.
    const std::vector<AVPacket*>& packets() const { return pointers; }

private:
    struct Free {
        void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
        void operator()(AVPacket* packet) const { av_packet_free(&packet); }
        void operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
    };

    void encode(AVCodecContext& codec, const Request& request);
    void receive(AVCodecContext& codec);

    AVRational rate;
    std::unique_ptr<AVCodecParameters, Free> parameters;
    std::vector<std::unique_ptr<AVPacket, Free>> owned;
    std::vector<AVPacket*> pointers;
};

}  // namespace Morvane::Tests
