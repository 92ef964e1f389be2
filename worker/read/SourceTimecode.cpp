#include "worker/read/SourceTimecode.h"

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/intreadwrite.h>
}

#include <cstdint>

#include "timecode/Timecode.h"

namespace Morvane::Worker {

namespace {

// Within the sample description, behind its size, type, reserved bytes and data reference.
constexpr int flagsAt = 4;
constexpr int framesPerSecondAt = 16;

constexpr std::uint32_t dropFrame = 1;
constexpr std::uint32_t mayBeNegative = 4;

std::optional<std::int64_t> firstFrame(AVStream& track, const SourceFile& file, bool isSigned) {
    const AVIndexEntry* entry = avformat_index_get_entry(&track, 0);
    std::uint8_t bytes[4];
    if (entry == nullptr || file.read(bytes, sizeof bytes, entry->pos) != sizeof bytes)
        return std::nullopt;
    const std::uint32_t number = AV_RB32(bytes);
    return isSigned ? std::int64_t{static_cast<std::int32_t>(number)} : std::int64_t{number};
}

std::optional<SourceTimecode> read(AVStream& track, const SourceFile& file) {
    const AVCodecParameters& parameters = *track.codecpar;
    const AVDictionaryEntry* stated = av_dict_get(track.metadata, "timecode", nullptr, 0);
    if (parameters.codec_tag != MKTAG('t', 'm', 'c', 'd') || parameters.extradata_size <= framesPerSecondAt ||
        stated == nullptr)
        return std::nullopt;
    const std::uint32_t flags = AV_RB32(parameters.extradata + flagsAt);
    const int framesPerSecond = parameters.extradata[framesPerSecondAt];
    const auto first = firstFrame(track, file, (flags & mayBeNegative) != 0);
    if (framesPerSecond == 0 || !first)
        return std::nullopt;
    if ((flags & dropFrame) != 0)
        return SourceTimecode{stated->value, framesPerSecond};
    const Timecode::FrameRate counted(static_cast<std::uint32_t>(framesPerSecond), false);
    return SourceTimecode{formatTimecode(*first, counted, Timecode::Mode::NonDrop), framesPerSecond};
}

}  // namespace

std::optional<SourceTimecode> SourceTimecode::of(const AVFormatContext& movie, const SourceFile& file) {
    for (unsigned i = 0; i < movie.nb_streams; ++i)
        if (auto track = read(*movie.streams[i], file))
            return track;
    return std::nullopt;
}

}  // namespace Morvane::Worker
