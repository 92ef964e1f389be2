#include "worker/movie/SoundMedia.h"

#include "worker/Status.h"
#include "worker/movie/AtomReader.h"
#include "worker/sound/ByteOrder.h"
#include "worker/sound/SoundFile.h"

#include <fmt/core.h>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
}

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>

namespace Morvane::Worker {

namespace {

struct FreeFormat {
    void operator()(AVFormatContext* format) const {
        if (format->pb) {
            std::uint8_t* bytes = nullptr;
            avio_close_dyn_buf(format->pb, &bytes);
            av_free(bytes);
        }
        avformat_free_context(format);
    }
};

/// Bytes of media that are put into the file at once.
constexpr std::size_t largestBlock = std::size_t{1} << 24;

/// Half a second: players that read sound and pictures in turn need not seek far. Less where a file claims
/// a rate and channels with which that would fill the memory.
std::int64_t framesPerChunk(std::uint32_t sampleRate, std::size_t bytesPerFrame) {
    const auto most = static_cast<std::int64_t>(largestBlock / bytesPerFrame);
    return std::clamp<std::int64_t>(sampleRate / 2, 1, most);
}

void check(int result) {
    if (result < 0) {
        throw StatusError(statusOfLibraryError(result, Status::NotSupportedByCodec),
                          "a QuickTime movie cannot hold sound of this form");
    }
}

/// The `moov` atom, behind `ftyp`, that libav writes for a movie of one sound track.
Bytes librarysHeader(const SoundFormat& format) {
    AVFormatContext* context = nullptr;
    check(avformat_alloc_output_context2(&context, nullptr, "mov", nullptr));
    const std::unique_ptr<AVFormatContext, FreeFormat> movie(context);
    check(avio_open_dyn_buf(&context->pb));
    AVStream* stream = avformat_new_stream(context, nullptr);
    check(stream ? 0 : AVERROR(ENOMEM));
    AVCodecParameters& parameters = *stream->codecpar;
    parameters.codec_type = AVMEDIA_TYPE_AUDIO;
    parameters.codec_id = format.codec;
    parameters.sample_rate = static_cast<int>(format.sampleRate);
    parameters.bits_per_coded_sample = static_cast<int>(8 * format.bytesPerSample());
    parameters.block_align = static_cast<int>(format.bytesPerFrame());
    if (av_channel_layout_from_string(&parameters.ch_layout, format.layout.c_str()) < 0) {
        av_channel_layout_default(&parameters.ch_layout, format.channels);
    }
    stream->time_base = {1, static_cast<int>(format.sampleRate)};
    AVDictionary* options = nullptr;
    av_dict_set(&options, "movflags", "frag_custom+empty_moov", 0);
    const int result = avformat_write_header(context, &options);
    av_dict_free(&options);
    check(result);
    std::uint8_t* bytes = nullptr;
    const int count = avio_close_dyn_buf(context->pb, &bytes);
    context->pb = nullptr;
    const std::unique_ptr<std::uint8_t, decltype(&av_free)> owned(bytes, av_free);
    return {bytes, bytes + count};
}

}  // namespace

IndexTrack soundIndexTrack(const SoundFormat& format) {
    const Bytes header = librarysHeader(format);
    const Atom description = requireAtom(header, {atomType("moov"), atomType("trak"), atomType("mdia"),
                                                  atomType("minf"), atomType("stbl"), atomType("stsd")});
    IndexTrack track;
    track.kind = TrackKind::Sound;
    track.description.assign(description.whole.begin(), description.whole.end());
    track.timeScale = format.sampleRate;
    return track;
}

SoundTrackWriter::SoundTrackWriter(const SoundFormat& soundFormat, AppendMedia appendMedia)
    : format(soundFormat), append(std::move(appendMedia)), track(soundIndexTrack(format)) {}

void SoundTrackWriter::add(ByteView sound) {
    const std::size_t frameBytes = format.bytesPerFrame();
    const std::size_t chunkBytes =
        static_cast<std::size_t>(framesPerChunk(format.sampleRate, frameBytes)) * frameBytes;
    while (!sound.empty()) {
        const std::size_t count = std::min(chunkBytes - pending.size(), sound.size());
        pending.insert(pending.end(), sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(count));
        sound = sound.subspan(count);
        if (pending.size() == chunkBytes) {
            flush();
        }
    }
}

void SoundTrackWriter::addSilence(std::int64_t frames) {
    if (frames <= 0) {
        return;
    }
    const std::size_t frameBytes = format.bytesPerFrame();
    const std::int64_t most = std::min<std::int64_t>(frames, framesPerChunk(format.sampleRate, frameBytes));
    const Bytes silence(static_cast<std::size_t>(most) * frameBytes);
    while (frames > 0) {
        const std::int64_t count = std::min(frames, most);
        add(ByteView(silence).first(static_cast<std::size_t>(count) * frameBytes));
        frames -= count;
    }
}

IndexTrack SoundTrackWriter::finish() {
    flush();
    return std::move(track);
}

void SoundTrackWriter::flush() {
    if (pending.empty()) {
        return;
    }
    const std::int64_t offset = append(pending);
    track.samples.addUniform(offset, static_cast<std::uint32_t>(pending.size() / format.bytesPerFrame()),
                             format.bytesPerFrame());
    pending.clear();
}

IndexTrack writeSoundFile(const std::string& audioPath, double offsetSeconds, const AppendMedia& append) {
    SoundFile sound(audioPath);
    if (!(std::fabs(offsetSeconds) <= latestSoundSeconds)) {
        throw StatusError(Status::BadArgument,
                          fmt::format("cannot add {} at {} s: beyond 24 hours", audioPath, offsetSeconds));
    }
    const std::int64_t position =
        sound.startDelay() + std::llround(offsetSeconds * sound.format().sampleRate);
    if (position > latestSoundSeconds * sound.format().sampleRate) {
        throw StatusError(
            Status::BadArgument,
            fmt::format("cannot add {}: its sound would begin more than 24 hours after the movie",
                        audioPath));
    }
    const std::size_t frameBytes = sound.format().bytesPerFrame();
    SoundTrackWriter track(sound.format(), append);
    track.addSilence(position);
    std::int64_t dropped = std::max<std::int64_t>(0, -position);
    Bytes block;
    bool kept = false;
    while (sound.read(block)) {
        const auto frames = static_cast<std::int64_t>(block.size() / frameBytes);
        const std::int64_t early = std::min(dropped, frames);
        track.add(ByteView(block).subspan(static_cast<std::size_t>(early) * frameBytes));
        dropped -= early;
        kept = kept || early < frames;
    }
    if (!kept) {
        throw StatusError(Status::BadArgument, fmt::format("nothing is left of the sound of {} at {} s",
                                                           audioPath, offsetSeconds));
    }
    return track.finish();
}

PositionedSound::PositionedSound(const SampleFormat& sampleFormat, AppendMedia appendMedia)
    : format(sampleFormat), append(std::move(appendMedia)) {}

void PositionedSound::checkRoom(std::int64_t position, std::int64_t count) const {
    const std::int64_t latest = latestSoundSeconds * format.sampleRate;
    if (position < 0 || count < 0 || position > latest || count > latest - position) {
        throw StatusError(
            Status::BadArgument,
            fmt::format("{} sound samples from {} on lie outside the movie's 24 hours", count, position));
    }
    const auto next = blocks.lower_bound(position);
    if (count == 0) {
        return;
    }
    const bool meetsNext = next != blocks.end() && next->first < position + count;
    const bool meetsPrevious =
        next != blocks.begin() && std::prev(next)->first + std::prev(next)->second.count > position;
    if (meetsNext || meetsPrevious) {
        throw StatusError(Status::BadArgument, fmt::format("sound samples {} to {} overlap earlier ones",
                                                           position, position + count));
    }
}

void PositionedSound::add(std::int64_t position, std::int64_t count, const std::byte* samples) {
    checkRoom(position, count);
    const std::size_t width = format.channels == 2 ? 2 : SampleFormat::bytesPerFrame;
    const auto* from = reinterpret_cast<const std::uint8_t*>(samples);
    while (count > 0) {
        const std::int64_t piece = std::min<std::int64_t>(count, largestBlock / SampleFormat::bytesPerFrame);
        const std::size_t bytes = static_cast<std::size_t>(piece) * SampleFormat::bytesPerFrame;
        Bytes media;
        appendBigEndian(media, from, bytes / width, width, width);
        blocks[position] = {piece, append(media)};
        from += bytes;
        position += piece;
        count -= piece;
    }
}

void PositionedSound::index(IndexTrack& track, std::int64_t offset, std::int64_t count) const {
    while (count > 0) {
        const std::int64_t frames =
            std::min(count, framesPerChunk(format.sampleRate, SampleFormat::bytesPerFrame));
        track.samples.addUniform(offset, static_cast<std::uint32_t>(frames), SampleFormat::bytesPerFrame);
        offset += frames * static_cast<std::int64_t>(SampleFormat::bytesPerFrame);
        count -= frames;
    }
}

IndexTrack PositionedSound::finish() {
    IndexTrack track = soundIndexTrack(trackFormatOf(format));
    const std::int64_t most = framesPerChunk(format.sampleRate, SampleFormat::bytesPerFrame);
    const Bytes silence(static_cast<std::size_t>(most) * SampleFormat::bytesPerFrame);
    std::int64_t position = 0;
    for (const auto& [start, block] : blocks) {
        while (position < start) {
            const std::int64_t count = std::min(start - position, most);
            const std::int64_t offset = append(
                ByteView(silence).first(static_cast<std::size_t>(count) * SampleFormat::bytesPerFrame));
            index(track, offset, count);
            position += count;
        }
        index(track, block.offset, block.count);
        position += block.count;
    }
    return track;
}

}  // namespace Morvane::Worker
