#pragma once

#include "worker/codec/EncodingPlan.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/bsf.h>
}

#include <memory>

namespace Morvane::Worker {

struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using PacketPointer = std::unique_ptr<AVPacket, FreePacket>;

struct FreeCodecContext {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};

struct FreeParameters {
    void operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
};
using ParametersPointer = std::unique_ptr<AVCodecParameters, FreeParameters>;

struct FreeBitstreamFilter {
    void operator()(AVBSFContext* filter) const { av_bsf_free(&filter); }
};

/// One libav encoder, opened for a plan, with the codec's bitstream filter behind it. One thread at a time.
class EncoderContext {
public:
    /// Throws StatusError (NotSupportedByCodec, NoMemory) where libav refuses.
    explicit EncoderContext(const EncodingPlan& plan);
    virtual ~EncoderContext() = default;
    EncoderContext(const EncoderContext&) = delete;
    EncoderContext& operator=(const EncoderContext&) = delete;

    /// The track's description, as a movie needs it; the caller owns it.
    ParametersPointer parameters() const;

    /// Packets that a decoder must have seen, at most, before it can show the first picture.
    int reorderDelay() const { return context->has_b_frames; }

    /// Hands over the next picture, null at the end. Throws StatusError (CodecFailed).
    virtual void send(AVFrame* frame);

    /// The next packet, null when the encoder wants another picture or has no more. Throws StatusError
    /// (CodecFailed).
    virtual PacketPointer receive();

private:
    void configure();
    void setColour();
    void setQuantiser(const std::string& value);
    void open();
    void openFilter();
    [[noreturn]] void fail(const char* what, int error) const;

    const EncodingPlan plan;
    std::unique_ptr<AVCodecContext, FreeCodecContext> context;
    std::unique_ptr<AVBSFContext, FreeBitstreamFilter> filter;
};

}  // namespace Morvane::Worker
