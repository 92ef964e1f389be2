#include "worker/movie/FrameCheck.h"

#include "worker/LibavPointers.h"
#include "worker/Status.h"

#include <fmt/core.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace Morvane::Worker {

namespace {

class FrameChecker {
public:
    explicit FrameChecker(const std::string& moviePath)
        : path(moviePath), packet(av_packet_alloc()), frame(av_frame_alloc()) {
        AVFormatContext* opened = nullptr;
        const int result = avformat_open_input(&opened, ("file:" + path).c_str(), nullptr, nullptr);
        format.reset(opened);
        if (result < 0 || format->nb_streams == 0) {
            wrong("it cannot be opened");
        }
        for (unsigned int i = 1; i < format->nb_streams; ++i) {
            format->streams[i]->discard = AVDISCARD_ALL;
        }
        const AVCodecParameters& parameters = *format->streams[0]->codecpar;
        const AVCodec* decoder = avcodec_find_decoder(parameters.codec_id);
        codec.reset(avcodec_alloc_context3(decoder));
        if (!decoder || !codec || !packet || !frame ||
            avcodec_parameters_to_context(codec.get(), &parameters) < 0) {
            throw StatusError(Status::NotSupportedByCodec, "there is no decoder to look at it with");
        }
        codec->err_recognition = AV_EF_EXPLODE;
        codec->thread_count = 1;
        if (avcodec_open2(codec.get(), decoder, nullptr) < 0) {
            throw StatusError(Status::NotSupportedByCodec, "there is no decoder to look at it with");
        }
    }

    void checkFirst() {
        if (next() != Outcome::Good) {
            wrong("its first frame cannot be decoded");
        }
    }

    /// Pictures before the last one that need others from before the key frame may fail; the last one not.
    void checkLast(std::int64_t last) {
        if (av_seek_frame(format.get(), 0, last, AVSEEK_FLAG_BACKWARD) < 0) {
            wrong("its last frame cannot be reached");
        }
        avcodec_flush_buffers(codec.get());
        bool good = false;
        for (Outcome outcome = next(); outcome != Outcome::End; outcome = next()) {
            good = outcome == Outcome::Good && frame->best_effort_timestamp == last;
        }
        if (!good) {
            wrong("its last frame cannot be decoded");
        }
    }

private:
    enum class Outcome { Good, Bad, End };

    /// The next picture, in the order in which they are shown.
    Outcome next() {
        while (true) {
            const int result = avcodec_receive_frame(codec.get(), frame.get());
            if (result == AVERROR_EOF) {
                return Outcome::End;
            }
            if (result != AVERROR(EAGAIN)) {
                return result >= 0 && frame->decode_error_flags == 0 ? Outcome::Good : Outcome::Bad;
            }
            if (!feed()) {
                return atEnd ? Outcome::End : Outcome::Bad;
            }
        }
    }

    /// Gives the decoder the next packet, or the end. Whether it takes it.
    bool feed() {
        int read = 0;
        do {
            av_packet_unref(packet.get());
            read = av_read_frame(format.get(), packet.get());
        } while (read >= 0 && packet->stream_index != 0);
        atEnd = read < 0;
        return avcodec_send_packet(codec.get(), atEnd ? nullptr : packet.get()) >= 0;
    }

    [[noreturn]] void wrong(const char* what) const {
        throw StatusError(Status::InputOutput, fmt::format("it is damaged: {}", what));
    }

    std::string path;
    bool atEnd = false;
    InputPointer format;
    CodecPointer codec;
    PacketPointer packet;
    FramePointer frame;
};

}  // namespace

void checkFirstAndLastFrame(const std::string& path, std::int64_t lastShown) {
    FrameChecker checker(path);
    checker.checkFirst();
    checker.checkLast(lastShown);
}

}  // namespace Morvane::Worker
