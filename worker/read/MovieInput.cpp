#include "worker/read/MovieInput.h"

extern "C" {
#include <libavutil/dict.h>
}

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include "worker/Status.h"

namespace Morvane::Worker {

namespace {

/// Play lists and reference movies name other files and addresses. None is opened: a host reads the file it
/// named.
int refuseToOpen(AVFormatContext*, AVIOContext** io, const char*, int, AVDictionary**) {
    *io = nullptr;
    return AVERROR(EPERM);
}

[[noreturn]] void fail(const std::string& path, int libraryError) {
    throw StatusError(statusOfLibraryError(libraryError, Status::CodecFailed),
                      "cannot read " + path + ": " + libraryReason(libraryError));
}

InputPointer openFormat(const std::string& path, FileSource& file) {
    AVFormatContext* context = requireMemory(avformat_alloc_context());
    context->pb = file.context();
    context->io_open = refuseToOpen;
    AVDictionary* options = nullptr;
    // Some demuxers open other files behind the context's back; no protocol is allowed to them.
    av_dict_set(&options, "protocol_whitelist", "none", 0);
    // All of the file's own keys, also those that only a camera's maker knows.
    av_dict_set(&options, "export_all", "1", 0);
    // Frees the context itself when it fails.
    const int result = avformat_open_input(&context, path.c_str(), nullptr, &options);
    av_dict_free(&options);
    if (result < 0)
        fail(path, result);
    return InputPointer(context);
}

}  // namespace

MovieInput::MovieInput(const SharedSource& source) : MovieInput(source, nullptr) {}

MovieInput::MovieInput(const SharedSource& source, const MovieInput* known)
    : source_(source), file(source), context(openFormat(source->path, file)) {
    if (known == nullptr || !takeTracks(*known))
        findTracks();
    for (unsigned i = 0; i < context->nb_streams; ++i)
        context->streams[i]->discard = static_cast<int>(i) == videoIndex ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    if (known == nullptr) {
        keepPalette();
        timecode_ = SourceTimecode::of(*context, *source);
        correctTimecode();
    } else {
        palette = known->palette;
        timecode_ = known->timecode_;
    }
    // Samples are frames and have their times: nothing to be found by parsing, nothing to be guessed.
    if (isQuickTime()) {
        context->flags |= AVFMT_FLAG_NOPARSE | AVFMT_FLAG_NOFILLIN;
        rewind();
    }
}

std::unique_ptr<MovieInput> MovieInput::openAgain() const {
    return std::unique_ptr<MovieInput>(new MovieInput(source_, this));
}

/// False where only reading on tells what the tracks are.
bool MovieInput::takeTracks(const MovieInput& known) {
    const AVFormatContext& first = *known.context;
    if (!isQuickTime() || context->nb_streams != first.nb_streams)
        return false;
    for (unsigned i = 0; i < context->nb_streams; ++i)
        if (avcodec_parameters_copy(context->streams[i]->codecpar, first.streams[i]->codecpar) < 0)
            throw std::bad_alloc();
    videoIndex = known.videoIndex;
    return true;
}

void MovieInput::findTracks() {
    const std::string& path = source_->path;
    const int result = avformat_find_stream_info(context.get(), nullptr);
    if (result < 0)
        fail(path, result);
    videoIndex = av_find_best_stream(context.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    // A cover picture is no movie.
    if (videoIndex < 0 || (video().disposition & AV_DISPOSITION_ATTACHED_PIC) != 0)
        throw StatusError(Status::CodecFailed, "cannot read " + path + ": it has no picture track");
}

/// A demuxer gives the movie's palette with the first packet that it ever reads and never again. That packet
/// is there, from finding out about the tracks, until the first seek.
void MovieInput::keepPalette() {
    if (video().codecpar->format != AV_PIX_FMT_PAL8)
        return;
    const PacketPointer first(requireMemory(av_packet_alloc()));
    if (!readPacket(*first))
        return;
    std::size_t bytes = 0;
    if (const std::uint8_t* data = av_packet_get_side_data(first.get(), AV_PKT_DATA_PALETTE, &bytes))
        palette.assign(data, data + bytes);
    rewind();
}

/// Wherever libav has written the time code down, it becomes the one that the track means.
void MovieInput::correctTimecode() {
    if (!timecode_)
        return;
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        AVDictionary*& facts = context->streams[i]->metadata;
        if (av_dict_get(facts, "timecode", nullptr, 0) != nullptr)
            av_dict_set(&facts, "timecode", timecode_->text.c_str(), 0);
    }
}

bool MovieInput::isQuickTime() const {
    return std::strstr(context->iformat->name, "mov") != nullptr;
}

void MovieInput::listOnly() {
    if (isQuickTime())
        file.skip(file.mediaDataRanges());
}

bool MovieInput::rewind() {
    // Before every time that a movie can have, and far enough from the type's end to be calculated with.
    constexpr std::int64_t beforeAll = -(std::int64_t{1} << 50);
    return seek(beforeAll);
}

bool MovieInput::seek(std::int64_t time) {
    return av_seek_frame(context.get(), videoIndex, time, AVSEEK_FLAG_BACKWARD) >= 0;
}

bool MovieInput::readPacket(AVPacket& packet) {
    for (;;) {
        av_packet_unref(&packet);
        if (av_read_frame(context.get(), &packet) < 0)
            return false;
        if (packet.stream_index != videoIndex)
            continue;
        if (!palette.empty() && av_packet_get_side_data(&packet, AV_PKT_DATA_PALETTE, nullptr) == nullptr)
            std::copy(palette.begin(), palette.end(),
                      requireMemory(av_packet_new_side_data(&packet, AV_PKT_DATA_PALETTE, palette.size())));
        return true;
    }
}

}  // namespace Morvane::Worker
