#include "worker/read/MovieProperties.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libavutil/dict.h>
#include <libavutil/pixdesc.h>
}

#include <limits>
#include <memory>

#include "property/NumberText.h"
#include "worker/read/MovieMetadata.h"

namespace Morvane::Worker {

namespace {

/// Adds the properties of one track.
class TrackWriter {
public:
    TrackWriter(Property::PropertyList& properties, unsigned number)
        : list(properties), prefix("track/" + std::to_string(number) + "/") {}

    void text(const std::string& name, const std::string& value) {
        if (value.empty())
            return;
        auto property = std::make_unique<Property::String>(prefix + name, 1);
        property->values[0] = value;
        list.push_back(std::move(property));
    }
    void text(const std::string& name, const char* value) {
        text(name, std::string(value == nullptr ? "" : value));
    }

    /// Numbers beyond an Int's range travel as text.
    void number(const std::string& name, std::int64_t value) {
        if (value < std::numeric_limits<std::int32_t>::min() ||
            value > std::numeric_limits<std::int32_t>::max())
            return text(name, std::to_string(value));
        auto property = std::make_unique<Property::Int>(prefix + name, 1);
        property->values[0] = static_cast<std::int32_t>(value);
        list.push_back(std::move(property));
    }
    void positive(const std::string& name, std::int64_t value) {
        if (value > 0)
            number(name, value);
    }
    void ratio(const std::string& name, AVRational value) {
        if (value.num > 0 && value.den > 0)
            text(name, std::to_string(value.num) + "/" + std::to_string(value.den));
    }

private:
    Property::PropertyList& list;
    const std::string prefix;
};

const char* typeName(const AVStream& stream) {
    if (stream.codecpar->codec_tag == MKTAG('t', 'm', 'c', 'd'))
        return "timecode";
    switch (stream.codecpar->codec_type) {
        case AVMEDIA_TYPE_VIDEO:
            return "video";
        case AVMEDIA_TYPE_AUDIO:
            return "sound";
        case AVMEDIA_TYPE_SUBTITLE:
            return "text";
        default:
            return "data";
    }
}

const char* fieldOrderName(AVFieldOrder order) {
    switch (order) {
        case AV_FIELD_TT:
        case AV_FIELD_TB:
            return "top";
        case AV_FIELD_BB:
        case AV_FIELD_BT:
            return "bottom";
        default:
            return "progressive";
    }
}

void addVideo(TrackWriter& track, const AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    track.number("width", parameters.width);
    track.number("height", parameters.height);
    track.ratio("rate", stream.avg_frame_rate);
    track.ratio("aspect", stream.sample_aspect_ratio.num > 0 ? stream.sample_aspect_ratio
                                                             : parameters.sample_aspect_ratio);
    track.text("fields", fieldOrderName(parameters.field_order));
    if (const char* name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(parameters.format)))
        track.text("pixel_format", name);
    if (parameters.color_primaries != AVCOL_PRI_UNSPECIFIED)
        track.text("primaries", av_color_primaries_name(parameters.color_primaries));
    if (parameters.color_trc != AVCOL_TRC_UNSPECIFIED)
        track.text("transfer", av_color_transfer_name(parameters.color_trc));
    if (parameters.color_space != AVCOL_SPC_UNSPECIFIED)
        track.text("matrix", av_color_space_name(parameters.color_space));
    if (parameters.color_range != AVCOL_RANGE_UNSPECIFIED)
        track.text("range", av_color_range_name(parameters.color_range));
}

void addSound(TrackWriter& track, const AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    track.number("sample_rate", parameters.sample_rate);
    track.number("channels", parameters.ch_layout.nb_channels);
    char layout[128] = "";
    if (av_channel_layout_describe(&parameters.ch_layout, layout, sizeof layout) > 0)
        track.text("layout", layout);
    track.positive("bits", parameters.bits_per_raw_sample > 0 ? parameters.bits_per_raw_sample
                                                              : parameters.bits_per_coded_sample);
}

void addTrack(TrackWriter& track, const AVStream& stream) {
    track.text("type", typeName(stream));
    track.text("codec_id", fourCharacters(stream.codecpar->codec_tag));
    if (stream.codecpar->codec_id != AV_CODEC_ID_NONE)
        track.text("codec_name", avcodec_get_name(stream.codecpar->codec_id));
    if (stream.duration > 0)
        track.text("duration",
                   Property::numberText(static_cast<double>(stream.duration) * av_q2d(stream.time_base)));
    track.positive("samples", stream.nb_frames);
    track.positive("bit_rate", stream.codecpar->bit_rate);
    if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
        addVideo(track, stream);
    if (stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
        addSound(track, stream);
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(stream.metadata, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr)
        track.text(std::string("meta/") + entry->key, entry->value);
}

}  // namespace

Property::PropertyList movieProperties(const MovieInput& input, const MovieDescription& description) {
    Property::PropertyList list;
    const AVFormatContext& format = input.format();
    auto count = std::make_unique<Property::Int>("tracks", 1);
    count->values[0] = static_cast<std::int32_t>(format.nb_streams);
    list.push_back(std::move(count));
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        TrackWriter track(list, i + 1);
        addTrack(track, *format.streams[i]);
        // The track that frames are read from: what reading has found out beyond the file's own statements.
        if (format.streams[i] == &input.video()) {
            track.number("frames", description.frames);
            track.number("bits", description.bits);
        }
    }
    return list;
}

}  // namespace Morvane::Worker
