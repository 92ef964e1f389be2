#pragma once

#include "worker/codec/EncodingPlan.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <functional>
#include <memory>

namespace Morvane::Worker {

/// Encodes a movie's frames. `addFrame` returns as soon as the pixels stand in a picture of ours; encoding
/// and delivery go on behind a bounded queue on threads of the encoder's. Codecs whose pictures stand alone
/// encode several frames side by side; their packets are put back in order.
///
/// Order of calls: construct, `start`, `addFrame` any number of times, `finish`. All from one thread.
/// The destructor stops without finishing: frames that are still queued are dropped.
class VideoEncoder {
public:
    /// Takes one packet; packets come in decoding order, one call at a time, on a thread of the encoder's.
    /// Times are in frames (time base `timeBase()`), `duration` 1; decoding times may start below 0. The
    /// packet is the encoder's and valid only during the call; `av_packet_ref` or move out of it what is to
    /// be kept. What it throws ends the encoding and comes out of the next `addFrame` or `finish`.
    using PacketSink = std::function<void(AVPacket& packet)>;

    /// Opens the encoder. Throws StatusError (NotSupportedByCodec, CodecFailed, NoMemory) where libav
    /// refuses.
    explicit VideoEncoder(const EncodingPlan& plan);
    ~VideoEncoder();
    VideoEncoder(const VideoEncoder&) = delete;
    VideoEncoder& operator=(const VideoEncoder&) = delete;

    /// What a movie file needs to describe the track: type, size, tags, extradata, pixel aspect, field order,
    /// depth. The type may be one that libav's muxer takes only with `strict` set to unofficial. Valid from
    /// construction for as long as the encoder lives.
    const AVCodecParameters& parameters() const;

    /// One frame: 1/rate.
    AVRational timeBase() const;

    /// Names where packets go and starts the threads. Once, before the first frame.
    void start(PacketSink sink);

    /// Converts `rgba` (width x height x 4 floats, RGBA, top row first, curved, premultiplied) and queues it
    /// as the next frame. Blocks while the queue is full. Throws StatusError: the reason of an earlier
    /// failure once, after that BadArgument: no more frames are taken.
    void addFrame(const float* rgba);

    /// Waits until every frame is encoded and delivered. Throws the reason of a failure that no `addFrame`
    /// has delivered; each failure is thrown once. Calling it again does nothing.
    void finish();

private:
    class Pipeline;
    std::unique_ptr<Pipeline> pipeline;
};

}  // namespace Morvane::Worker
