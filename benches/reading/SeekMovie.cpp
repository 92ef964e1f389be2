// What the codec library alone needs for frames at random: it seeks to the key frame before, decodes up to
// the frame and converts that one to planar floats, all with the threads that it likes to take.
//
// Usage: seek_movie MOVIE COUNT. The movie must have a constant rate and begin at 0.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

#include <cstdio>
#include <cstdlib>

#include "benches/reading/RandomFrames.h"

namespace {

void require(bool success, const char* what) {
    if (!success) {
        std::fprintf(stderr, "%s failed\n", what);
        std::exit(1);
    }
}

/// The frame shown at `time`, decoded from the key frame before it.
void decodeAt(AVFormatContext* format, AVCodecContext* decoder, int stream, std::int64_t time,
              AVPacket* packet, AVFrame* frame) {
    require(av_seek_frame(format, stream, time, AVSEEK_FLAG_BACKWARD) >= 0, "seeking");
    avcodec_flush_buffers(decoder);
    for (;;) {
        const int result = avcodec_receive_frame(decoder, frame);
        if (result >= 0 && frame->pts >= time) {
            return;
        }
        require(result >= 0 || result == AVERROR(EAGAIN), "decoding");
        if (result < 0) {
            const bool read = av_read_frame(format, packet) >= 0;
            if (!read || packet->stream_index == stream) {
                avcodec_send_packet(decoder, read ? packet : nullptr);
            }
            av_packet_unref(packet);
        }
    }
}

SwsContext* converterFor(const AVFrame& frame) {
    SwsContext* converter = sws_alloc_context();
    av_opt_set_int(converter, "srcw", frame.width, 0);
    av_opt_set_int(converter, "srch", frame.height, 0);
    av_opt_set_int(converter, "dstw", frame.width, 0);
    av_opt_set_int(converter, "dsth", frame.height, 0);
    av_opt_set_int(converter, "src_format", frame.format, 0);
    av_opt_set_int(converter, "dst_format", AV_PIX_FMT_GBRPF32LE, 0);
    av_opt_set_int(converter, "sws_flags", SWS_BICUBIC, 0);
    av_opt_set(converter, "threads", "auto", 0);
    require(sws_init_context(converter, nullptr, nullptr) >= 0, "setting up the conversion");
    return converter;
}

}  // namespace

int main(int argc, char** argv) {
    require(argc == 3, "usage");
    av_log_set_level(AV_LOG_ERROR);
    AVFormatContext* format = nullptr;
    require(avformat_open_input(&format, argv[1], nullptr, nullptr) >= 0, "opening");
    require(avformat_find_stream_info(format, nullptr) >= 0, "finding tracks");
    const AVCodec* codec = nullptr;
    const int stream = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    require(stream >= 0, "finding pictures");
    const AVStream& track = *format->streams[stream];
    AVCodecContext* decoder = avcodec_alloc_context3(codec);
    avcodec_parameters_to_context(decoder, track.codecpar);
    decoder->thread_count = 0;
    require(avcodec_open2(decoder, codec, nullptr) >= 0, "opening the decoder");

    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    AVFrame* floats = av_frame_alloc();
    SwsContext* converter = nullptr;
    const AVRational oneFrame = av_inv_q(track.avg_frame_rate);
    for (const int number : randomFrames(std::atoi(argv[2]), static_cast<int>(track.nb_frames))) {
        decodeAt(format, decoder, stream, av_rescale_q(number, oneFrame, track.time_base), packet, frame);
        if (converter == nullptr) {
            converter = converterFor(*frame);
        }
        floats->width = frame->width;
        floats->height = frame->height;
        floats->format = AV_PIX_FMT_GBRPF32LE;
        require(sws_scale_frame(converter, floats, frame) >= 0, "converting");
        av_frame_unref(floats);
    }
    sws_freeContext(converter);
    av_frame_free(&floats);
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&decoder);
    avformat_close_input(&format);
    return 0;
}
