#include "worker/sound/SoundDecoder.h"

#include "worker/LibavPointers.h"
#include "worker/Status.h"
#include "worker/sound/ByteOrder.h"

#include <fmt/core.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/common.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <array>

namespace Morvane::Worker {

namespace {

struct FreeConverter {
    void operator()(SwrContext* converter) const { swr_free(&converter); }
};

std::string layoutName(const AVChannelLayout& layout) {
    std::array<char, 256> name{};
    av_channel_layout_describe(&layout, name.data(), name.size());
    return name.data();
}

/// The interleaved form that holds samples of `format` exactly.
AVSampleFormat interleavedForm(AVSampleFormat format) {
    switch (av_get_packed_sample_fmt(format)) {
        case AV_SAMPLE_FMT_U8:
            return AV_SAMPLE_FMT_S16;
        case AV_SAMPLE_FMT_S64:
            return AV_SAMPLE_FMT_DBL;
        default:
            return av_get_packed_sample_fmt(format);
    }
}

AVCodecID trackCodec(AVSampleFormat interleaved, int significantBits) {
    switch (interleaved) {
        case AV_SAMPLE_FMT_S16:
            return AV_CODEC_ID_PCM_S16BE;
        case AV_SAMPLE_FMT_S32:
            return significantBits > 0 && significantBits <= 24 ? AV_CODEC_ID_PCM_S24BE
                                                                : AV_CODEC_ID_PCM_S32BE;
        case AV_SAMPLE_FMT_FLT:
            return AV_CODEC_ID_PCM_F32BE;
        case AV_SAMPLE_FMT_DBL:
            return AV_CODEC_ID_PCM_F64BE;
        default:
            return AV_CODEC_ID_NONE;
    }
}

}  // namespace

class SoundDecoder::Decoding {
public:
    explicit Decoding(const std::string& soundPath)
        : path(soundPath), packet(av_packet_alloc()), frame(av_frame_alloc()) {
        if (!packet || !frame) {
            throw StatusError(Status::NoMemory, fmt::format("no memory to read {}", path));
        }
        openFile();
        openCodec();
        describe();
    }

    bool read(std::vector<std::uint8_t>& block) {
        while (true) {
            const int result = avcodec_receive_frame(codec.get(), frame.get());
            if (result == AVERROR_EOF) {
                return false;
            }
            if (result == AVERROR(EAGAIN)) {
                sendNextPacket();
                continue;
            }
            if (result < 0) {
                damaged(result);
            }
            if (frame->nb_samples > 0) {
                convert(block);
                framesRead += frame->nb_samples;
                return true;
            }
        }
    }

    SoundFormat form;
    std::int64_t delay = 0;

private:
    void openFile() {
        AVFormatContext* context = nullptr;
        // The protocol is named, or a colon in the name would be taken for one.
        int result = avformat_open_input(&context, ("file:" + path).c_str(), nullptr, nullptr);
        format.reset(context);
        if (result >= 0) {
            result = avformat_find_stream_info(context, nullptr);
        }
        if (result < 0) {
            throw StatusError(statusOfLibraryError(result, Status::BadArgument),
                              fmt::format("cannot read sound from {}: {}", path, libraryReason(result)));
        }
        const AVCodec* decoder = nullptr;
        result = av_find_best_stream(context, AVMEDIA_TYPE_AUDIO, -1, -1, &decoder, 0);
        if (result < 0 || !decoder) {
            throw StatusError(
                Status::BadArgument,
                fmt::format("cannot read sound from {}: it holds none that can be decoded", path));
        }
        stream = context->streams[result];
        codec.reset(avcodec_alloc_context3(decoder));
        for (unsigned int i = 0; i < context->nb_streams; ++i) {
            context->streams[i]->discard = context->streams[i] == stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
        }
    }

    void openCodec() {
        int result = codec ? avcodec_parameters_to_context(codec.get(), stream->codecpar) : AVERROR(ENOMEM);
        if (result >= 0) {
            codec->pkt_timebase = stream->time_base;
            result = avcodec_open2(codec.get(), codec->codec, nullptr);
        }
        if (result < 0) {
            throw StatusError(statusOfLibraryError(result, Status::BadArgument),
                              fmt::format("cannot decode the sound of {}: {}", path, libraryReason(result)));
        }
    }

    void describe() {
        if (codec->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) {
            const int channels = codec->ch_layout.nb_channels;
            av_channel_layout_uninit(&codec->ch_layout);
            av_channel_layout_default(&codec->ch_layout, channels);
        }
        interleaved = interleavedForm(codec->sample_fmt);
        const int bits = codec->bits_per_raw_sample > 0 ? codec->bits_per_raw_sample
                                                        : stream->codecpar->bits_per_raw_sample;
        form = {trackCodec(interleaved, bits), static_cast<std::uint32_t>(codec->sample_rate),
                codec->ch_layout.nb_channels, layoutName(codec->ch_layout)};
        if (form.codec == AV_CODEC_ID_NONE || codec->sample_rate <= 0 || form.channels <= 0) {
            throw StatusError(
                Status::BadArgument,
                fmt::format("cannot read sound from {}: it says neither rate nor channels", path));
        }
        if (stream->start_time != AV_NOPTS_VALUE && format->start_time != AV_NOPTS_VALUE) {
            const std::int64_t fileStart = framesUntil(format->start_time, {1, AV_TIME_BASE});
            const std::int64_t start = framesUntil(stream->start_time, stream->time_base);
            delay = std::max<std::int64_t>(0, av_sat_sub64(start, fileStart));
        }
        AVChannelLayout* layout = &codec->ch_layout;
        SwrContext* context = nullptr;
        int result = swr_alloc_set_opts2(&context, layout, interleaved, codec->sample_rate, layout,
                                         codec->sample_fmt, codec->sample_rate, 0, nullptr);
        converter.reset(context);
        if (result >= 0) {
            result = swr_init(context);
        }
        if (result < 0) {
            throw StatusError(statusOfLibraryError(result, Status::BadArgument),
                              fmt::format("cannot convert the sound of {}: {}", path, libraryReason(result)));
        }
    }

    /// Sample frames from time 0 until `time`.
    std::int64_t framesUntil(std::int64_t time, AVRational timeBase) const {
        const std::int64_t frames = av_rescale_q(time, timeBase, {1, codec->sample_rate});
        // What the library answers where the number does not fit.
        if (frames == INT64_MIN) {
            throw StatusError(Status::BadArgument,
                              fmt::format("cannot read sound from {}: its times are impossible", path));
        }
        return frames;
    }

    void sendNextPacket() {
        int result = 0;
        do {
            av_packet_unref(packet.get());
            result = av_read_frame(format.get(), packet.get());
        } while (result >= 0 && packet->stream_index != stream->index);
        if (result < 0 && result != AVERROR_EOF) {
            damaged(result);
        }
        result = avcodec_send_packet(codec.get(), result < 0 ? nullptr : packet.get());
        if (result < 0) {
            damaged(result);
        }
    }

    void convert(std::vector<std::uint8_t>& block) {
        if (frame->sample_rate != codec->sample_rate || frame->format != codec->sample_fmt ||
            frame->ch_layout.nb_channels != form.channels) {
            throw StatusError(
                Status::BadArgument,
                fmt::format("the sound of {} changes its form after {:.3f} s", path, seconds()));
        }
        const auto samples =
            static_cast<std::size_t>(frame->nb_samples) * static_cast<std::size_t>(form.channels);
        const auto width = static_cast<std::size_t>(av_get_bytes_per_sample(interleaved));
        scratch.resize(samples * width);
        std::uint8_t* out = scratch.data();
        const int result =
            swr_convert(converter.get(), &out, frame->nb_samples,
                        const_cast<const std::uint8_t**>(frame->extended_data), frame->nb_samples);
        if (result != frame->nb_samples) {
            throw StatusError(Status::CodecFailed, fmt::format("cannot convert the sound of {}", path));
        }
        block.clear();
        appendBigEndian(block, scratch.data(), samples, width, form.bytesPerSample());
    }

    double seconds() const { return static_cast<double>(framesRead) / codec->sample_rate; }

    [[noreturn]] void damaged(int libraryError) const {
        throw StatusError(statusOfLibraryError(libraryError, Status::BadArgument),
                          fmt::format("the sound of {} is damaged after {:.3f} s: {}", path, seconds(),
                                      libraryReason(libraryError)));
    }

    std::string path;
    InputPointer format;
    CodecPointer codec;
    std::unique_ptr<SwrContext, FreeConverter> converter;
    PacketPointer packet;
    FramePointer frame;
    AVStream* stream = nullptr;
    AVSampleFormat interleaved = AV_SAMPLE_FMT_NONE;
    std::vector<std::uint8_t> scratch;
    std::int64_t framesRead = 0;
};

SoundDecoder::SoundDecoder(const std::string& path) : decoding(std::make_unique<Decoding>(path)) {}

SoundDecoder::~SoundDecoder() = default;

const SoundFormat& SoundDecoder::format() const {
    return decoding->form;
}

std::int64_t SoundDecoder::startDelay() const {
    return decoding->delay;
}

bool SoundDecoder::read(std::vector<std::uint8_t>& block) {
    return decoding->read(block);
}

}  // namespace Morvane::Worker
