#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/bsf.h>
#include <libavformat/avformat.h>
}

#include <memory>
#include <new>

namespace Morvane::Worker {

/// How libav's objects are given back.
struct LibavFree {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
    void operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
    void operator()(AVBSFContext* filter) const { av_bsf_free(&filter); }
};

/// A file that is read: closed, and given back.
struct LibavCloseInput {
    void operator()(AVFormatContext* input) const { avformat_close_input(&input); }
};

using FramePointer = std::unique_ptr<AVFrame, LibavFree>;
using PacketPointer = std::unique_ptr<AVPacket, LibavFree>;
using CodecPointer = std::unique_ptr<AVCodecContext, LibavFree>;
using ParametersPointer = std::unique_ptr<AVCodecParameters, LibavFree>;
using FilterPointer = std::unique_ptr<AVBSFContext, LibavFree>;
using InputPointer = std::unique_ptr<AVFormatContext, LibavCloseInput>;

/// `pointer`, which libav has just allocated; throws std::bad_alloc for null.
template <typename T>
T* requireMemory(T* pointer) {
    if (pointer == nullptr)
        throw std::bad_alloc();
    return pointer;
}

}  // namespace Morvane::Worker
