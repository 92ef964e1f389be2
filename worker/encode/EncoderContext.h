#pragma once

#include "worker/LibavPointers.h"
#include "worker/codec/EncodingPlan.h"
#include "worker/picture/BufferPool.h"

namespace Morvane::Worker {

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

protected:
    /// Memory for a packet of up to `bytes` bytes and the padding behind it; null where there is none. Any
    /// thread.
    AVBufferRef* takePacketBuffer(std::size_t bytes);

private:
    static int givePacketBuffer(AVCodecContext* encoder, AVPacket* packet, int flags);
    void configure();
    void setColour();
    void setQuantiser(const std::string& value);
    void open();
    void openFilter();
    [[noreturn]] void fail(const char* what, int error) const;

    const EncodingPlan plan;
    BufferPool packetMemory;
    CodecPointer context;
    FilterPointer filter;
};

}  // namespace Morvane::Worker
