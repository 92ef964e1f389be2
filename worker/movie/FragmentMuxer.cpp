#include "worker/movie/FragmentMuxer.h"

#include "worker/Status.h"

#include <fmt/core.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

#include <string>

namespace Morvane::Worker {

namespace {

/// The muxer goes back to fill in an atom's size, which it can do only inside this buffer: no `moof` may be
/// larger. One of 1,000 packets has some 16 KiB.
constexpr int bufferBytes = 1 << 18;

}  // namespace

void FragmentMuxer::FreeFormat::operator()(AVFormatContext* context) const {
    if (context->pb) {
        av_freep(&context->pb->buffer);
        avio_context_free(&context->pb);
    }
    avformat_free_context(context);
}

void FragmentMuxer::FreePacket::operator()(AVPacket* packet) const {
    av_packet_free(&packet);
}

FragmentMuxer::FragmentMuxer(const VideoTrack& track, TimeScale timeScale, Sink bytesSink)
    : sink(std::move(bytesSink)), scale(timeScale), held(av_packet_alloc()) {
    AVFormatContext* context = nullptr;
    check(avformat_alloc_output_context2(&context, nullptr, "mov", nullptr), "set up");
    format.reset(context);
    auto* buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
    format->pb = avio_alloc_context(buffer, bufferBytes, 1, this, nullptr, writeBytes, nullptr);
    AVStream* stream = avformat_new_stream(format.get(), nullptr);
    if (!held || !format->pb || !stream) {
        throw StatusError(Status::NoMemory, "no memory for the movie's muxer");
    }
    format->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    check(avcodec_parameters_copy(stream->codecpar, track.parameters), "describe");
    stream->sample_aspect_ratio = track.parameters->sample_aspect_ratio;
    stream->time_base = {static_cast<int>(scale.ticksPerFrame), static_cast<int>(scale.ticksPerSecond)};
    stream->avg_frame_rate = track.frameRate;
    if (!track.compressorName.empty()) {
        av_dict_set(&stream->metadata, "encoder", track.compressorName.c_str(), 0);
    }
    AVDictionary* options = nullptr;
    av_dict_set(&options, "movflags", "frag_custom+delay_moov+default_base_moof", 0);
    av_dict_set_int(&options, "video_track_timescale", scale.ticksPerSecond, 0);
    av_dict_set_int(&options, "movie_timescale", scale.ticksPerSecond, 0);
    const int result = avformat_write_header(format.get(), &options);
    av_dict_free(&options);
    if (result < 0) {
        throw StatusError(statusOfLibraryError(result, Status::NotSupportedByCodec),
                          fmt::format("a QuickTime movie cannot hold this codec: {}", libraryReason(result)));
    }
}

void FragmentMuxer::add(const AVPacket& packet) {
    check(av_packet_ref(held.get(), &packet), "keep a packet of");
    held->stream_index = 0;
    held->duration = 1;
    av_packet_rescale_ts(held.get(),
                         {static_cast<int>(scale.ticksPerFrame), static_cast<int>(scale.ticksPerSecond)},
                         format->streams[0]->time_base);
    const int result = av_write_frame(format.get(), held.get());
    av_packet_unref(held.get());
    check(result, "take a packet of");
}

void FragmentMuxer::flush() {
    check(av_write_frame(format.get(), nullptr), "write");
    avio_flush(format->pb);
    check(format->pb->error, "write");
}

int FragmentMuxer::writeBytes(void* self, std::uint8_t* bytes, int count) {
    auto* muxer = static_cast<FragmentMuxer*>(self);
    // Nothing may be thrown through the library's C code.
    if (muxer->sinkFailure) {
        return AVERROR(EIO);
    }
    try {
        muxer->sink({bytes, static_cast<std::size_t>(count)});
    } catch (...) {
        muxer->sinkFailure = std::current_exception();
        return AVERROR(EIO);
    }
    return count;
}

void FragmentMuxer::check(int result, const char* what) {
    if (sinkFailure) {
        std::rethrow_exception(std::exchange(sinkFailure, nullptr));
    }
    if (result < 0) {
        throw StatusError(statusOfLibraryError(result, Status::CodecFailed),
                          fmt::format("cannot {} the movie: {}", what, libraryReason(result)));
    }
}

}  // namespace Morvane::Worker
