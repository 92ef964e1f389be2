#include "TestPackets.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
}

#include <cstring>
#include <stdexcept>

namespace Morvane::Tests {

namespace {

void check(int result, const char* what) {
    if (result < 0) {
        throw std::runtime_error(std::string("cannot ") + what);
    }
}

struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};

}  // namespace

TestPackets::TestPackets(const Request& request)
    : rate(request.rate), parameters(avcodec_parameters_alloc()) {
    av_log_set_level(AV_LOG_ERROR);
    const AVCodec* encoder = avcodec_find_encoder_by_name(request.encoder.c_str());
    if (!encoder) {
        throw std::runtime_error("no encoder " + request.encoder);
    }
    const std::unique_ptr<AVCodecContext, Free> codec(avcodec_alloc_context3(encoder));
    codec->width = request.width;
    codec->height = request.height;
    codec->pix_fmt = request.pixels;
    codec->time_base = av_inv_q(request.rate);
    codec->framerate = request.rate;
    codec->sample_aspect_ratio = request.aspect;
    codec->color_primaries = AVCOL_PRI_BT709;
    codec->color_trc = AVCOL_TRC_BT709;
    codec->colorspace = AVCOL_SPC_BT709;
    codec->field_order = AV_FIELD_PROGRESSIVE;
    codec->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    codec->thread_count = 1;
    AVDictionary* options = nullptr;
    for (const auto& [key, value] : request.options) {
        av_dict_set(&options, key.c_str(), value.c_str(), 0);
    }
    const int opened = avcodec_open2(codec.get(), encoder, &options);
    av_dict_free(&options);
    check(opened, "open the encoder");
    check(avcodec_parameters_from_context(parameters.get(), codec.get()), "describe the codec");
    if (request.tag != 0) {
        parameters->codec_tag = request.tag;
    }
    if (request.bitsPerCodedSample != 0) {
        parameters->bits_per_coded_sample = request.bitsPerCodedSample;
    }
    encode(*codec, request);
}

void TestPackets::encode(AVCodecContext& codec, const Request& request) {
    const std::unique_ptr<AVFrame, FreeFrame> frame(av_frame_alloc());
    frame->width = request.width;
    frame->height = request.height;
    frame->format = request.pixels;
    for (int i = 0; i < request.frames; ++i) {
        av_frame_unref(frame.get());
        frame->width = request.width;
        frame->height = request.height;
        frame->format = request.pixels;
        check(av_frame_get_buffer(frame.get(), 0), "make a frame");
        for (auto& buffer : frame->buf) {
            if (buffer) {
                std::memset(buffer->data, 16 + i % 200, buffer->size);
            }
        }
        frame->color_primaries = codec.color_primaries;
        frame->color_trc = codec.color_trc;
        frame->colorspace = codec.colorspace;
        frame->pts = i;
        check(avcodec_send_frame(&codec, frame.get()), "encode a frame");
        receive(codec);
    }
    check(avcodec_send_frame(&codec, nullptr), "finish encoding");
    receive(codec);
}

void TestPackets::receive(AVCodecContext& codec) {
    while (true) {
        std::unique_ptr<AVPacket, Free> packet(av_packet_alloc());
        if (avcodec_receive_packet(&codec, packet.get()) < 0) {
            return;
        }
        packet->duration = 1;
        pointers.push_back(packet.get());
        owned.push_back(std::move(packet));
    }
}

Worker::VideoTrack TestPackets::track() const {
    return {parameters.get(), rate, "Test Codec"};
}

}  // namespace Morvane::Tests
