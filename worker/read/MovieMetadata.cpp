#include "worker/read/MovieMetadata.h"

extern "C" {
#include <libavcodec/codec_desc.h>
#include <libavutil/dict.h>
}

#include <algorithm>
#include <set>

#include "property/NumberText.h"
#include "worker/codec/CodecTable.h"
#include "worker/codec/Colour.h"
#include "worker/movie/MovieTracks.h"

namespace Morvane::Worker {

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

std::string valueOf(const AVDictionary* dictionary, const char* key) {
    const AVDictionaryEntry* entry = av_dict_get(dictionary, key, nullptr, 0);
    return entry == nullptr ? "" : entry->value;
}

/// From the picture track, which libav gives what its time-code track says, else from whatever has it.
std::string valueAnywhere(const MovieInput& input, const char* key) {
    std::string value = valueOf(input.video().metadata, key);
    for (unsigned i = 0; value.empty() && i < input.format().nb_streams; ++i)
        value = valueOf(input.format().streams[i]->metadata, key);
    return value.empty() ? valueOf(input.format().metadata, key) : value;
}

std::string codecId(const AVCodecParameters& parameters) {
    const std::string type = fourCharacters(parameters.codec_tag);
    return type.empty() ? avcodec_get_name(parameters.codec_id) : type;
}

/// As the codec list calls it, so that a person finds it there again.
std::string codecName(const AVCodecParameters& parameters) {
    if (const Codec* codec = findCodec(fourCharacters(parameters.codec_tag)))
        return codec->name;
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(parameters.codec_id);
    return descriptor == nullptr || descriptor->long_name == nullptr ? "" : descriptor->long_name;
}

std::string alpha(const MovieInput& input, const MovieDescription& description) {
    if (description.channels < 4)
        return alphaModeName(AlphaMode::None);
    const std::string stated = valueOf(input.format().metadata, alphaMetadataKey);
    return stated.empty() ? alphaModeName(AlphaMode::Straight) : stated;
}

void append(Pairs& pairs, const AVDictionary* dictionary) {
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(dictionary, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr)
        pairs.emplace_back(entry->key, entry->value);
}

}  // namespace

std::string fourCharacters(std::uint32_t tag) {
    std::string text;
    for (int shift = 0; shift < 32; shift += 8)
        text += static_cast<char>(tag >> shift & 0xff);
    const bool printable = std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return printable ? text : "";
}

Pairs movieMetadata(const MovieInput& input, const MovieDescription& description) {
    const AVCodecParameters& parameters = *input.video().codecpar;
    Pairs all = {
        {"input/timecode", valueAnywhere(input, "timecode")},
        {"quicktime/timecode_rate",
         input.timecode() ? Property::numberText(input.timecode()->framesPerSecond) : ""},
        {"quicktime/reel", valueAnywhere(input, "reel_name")},
        {"input/frame_rate", description.rate.num > 0 ? Property::numberText(av_q2d(description.rate)) : ""},
        {"quicktime/codec_id", codecId(parameters)},
        {"quicktime/codec_name", codecName(parameters)},
        {"quicktime/encoder", valueAnywhere(input, "encoder")},
        {"quicktime/alpha", alpha(input, description)}};
    std::erase_if(all, [](const auto& pair) { return pair.second.empty(); });
    append(all, input.format().metadata);
    append(all, input.video().metadata);
    std::set<std::string> seen;
    std::erase_if(all, [&](const auto& pair) { return !seen.insert(pair.first).second; });
    return all;
}

}  // namespace Morvane::Worker
