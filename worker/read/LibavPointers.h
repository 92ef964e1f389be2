#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <memory>
#include <new>
#include <string>

namespace Morvane::Worker {

struct FreeFormat {
    void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
};
struct FreeDecoder {
    void operator()(AVCodecContext* decoder) const { avcodec_free_context(&decoder); }
};
struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};

using FormatPointer = std::unique_ptr<AVFormatContext, FreeFormat>;
using DecoderPointer = std::unique_ptr<AVCodecContext, FreeDecoder>;
using PacketPointer = std::unique_ptr<AVPacket, FreePacket>;
using FramePointer = std::unique_ptr<AVFrame, FreeFrame>;

/// What libav says about `libraryError`, in words.
std::string libavReason(int libraryError);

/// `pointer`, which libav has just allocated; throws std::bad_alloc for null.
template <typename T>
T* requireMemory(T* pointer) {
    if (pointer == nullptr)
        throw std::bad_alloc();
    return pointer;
}

}  // namespace Morvane::Worker
