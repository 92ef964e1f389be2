#include "host/app/PictureInfo.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "host/app/InfoPrint.h"
#include "host/images/FrameRange.h"
#include "host/images/ImageSequence.h"
#include "host/images/NameMatch.h"
#include "host/images/ReadContents.h"

namespace Corvel {
namespace {

constexpr std::size_t longestValue = 100;  // characters

/// Everything that is told of a file or a sequence.
struct PictureFacts {
    std::string path;
    std::vector<int> frames;  ///< empty for one file
    std::vector<int> missing;
    FileContents contents;
    std::optional<PictureHeader> header;  ///< of the picture that is read unasked, else of any other
    std::string refusal;                  ///< why nothing is read unasked, empty where something is
};

std::optional<PictureHeader> headerOf(const std::string& path, const PictureChoice& choice,
                                      std::string& refusal) {
    try {
        return createImageReader(choice)->readHeader(path);
    } catch (const UnreadableImage& error) {
        refusal = error.what();
        return std::nullopt;
    }
}

// Files without a picture still have a rate and a time code.
std::optional<PictureHeader> anyHeader(const std::string& path, const FileContents& contents) {
    std::string ignored;
    for (std::size_t part = 0; part < contents.parts.size(); ++part) {
        if (!contents.parts[part].channels.empty()) {
            const std::string& name = contents.parts[part].channels.front().name;
            const PictureChoice choice{.part = std::to_string(part), .channels = {name, name, name, ""}};
            if (auto header = headerOf(path, choice, ignored)) {
                return header;
            }
        }
    }
    return std::nullopt;
}

// The frames that are missing between the first and the last; none are named of those that lie very far
// apart.
std::vector<int> gapsOf(const FrameSource& source) {
    constexpr std::int64_t farthest = 1'000'000;
    const int first = source.frames().front();
    const int last = source.frames().back();
    std::vector<int> gaps;
    for (int frame = first; std::int64_t{last} - first < farthest && frame < last; ++frame) {
        if (!source.has(frame)) {
            gaps.push_back(frame);
        }
    }
    return gaps;
}

PictureFacts factsOf(const std::string& input) {
    const ImageSequence sequence(input, nullptr);
    PictureFacts facts;
    const int first = sequence.frames().front();
    facts.path = sequence.nameOf(first);
    if (facts.path != input) {
        facts.frames = sequence.frames();
        facts.missing = gapsOf(sequence);
    }
    facts.contents = readContents(facts.path);
    facts.header = headerOf(facts.path, {}, facts.refusal);
    if (!facts.header) {
        facts.header = anyHeader(facts.path, facts.contents);
    }
    return facts;
}

std::string entryOf(const PictureFacts& facts, const char* key) {
    if (!facts.header) {
        return "";
    }
    const auto found = facts.header->metadata.find(key);
    return found == facts.header->metadata.end() ? "" : found->second;
}

std::string windowText(const Window& window) {
    return fmt::format("{} x {}{}", window.width, window.height,
                       window.x == 0 && window.y == 0 ? "" : fmt::format(" at {}, {}", window.x, window.y));
}

std::string cut(const std::string& text) {
    return printable(text, longestValue);
}

// As people name colours and directions, whatever the file's order.
std::size_t placeOf(const std::string& channel) {
    return channel.size() == 1 ? std::string("rgbaxyz").find(lowered(channel)) : std::string::npos;
}

// "R, G, B (half), id (uint)"
std::string channelsText(std::vector<StoredChannel> channels) {
    std::stable_sort(channels.begin(), channels.end(), [](const auto& one, const auto& other) {
        return placeOf(one.name) < placeOf(other.name);
    });
    std::string text;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const bool last = i + 1 == channels.size() || channels[i + 1].type != channels[i].type;
        text += (i == 0 ? "" : ", ") + cut(channels[i].name) + (last ? " (" + channels[i].type + ")" : "");
    }
    return text;
}

// The channels of each layer of a part, and of each view where a part has several.
InfoRows layerRows(const FileContents& contents, const FilePart& part) {
    std::vector<std::pair<std::string, std::vector<StoredChannel>>> layers;
    for (const StoredChannel& channel : part.channels) {
        const ChannelName name = splitChannelName(channel.name, part, contents.views);
        std::string layer = name.layer.empty() ? layerOfPart(contents, part) : name.layer;
        layer = layer.empty() ? "(no layer)" : cut(layer);
        layer += part.view.empty() && !name.view.empty() ? ", " + cut(name.view) : "";
        auto found = std::find_if(layers.begin(), layers.end(),
                                  [&](const auto& known) { return known.first == layer; });
        if (found == layers.end()) {
            layers.emplace_back(layer, std::vector<StoredChannel>());
            found = layers.end() - 1;
        }
        found->second.push_back({name.channel, channel.type});
    }
    InfoRows rows;
    rows.reserve(layers.size());
    for (const auto& [layer, channels] : layers) {
        rows.emplace_back(layer, channelsText(channels));
    }
    return rows;
}

std::string pictureText(const PictureFacts& facts) {
    const PictureHeader& header = *facts.header;
    return fmt::format("{} x {}, {}, {} bits{}", header.display.width, header.display.height,
                       header.hasAlpha ? "RGB with alpha" : "RGB", header.bits,
                       header.floatingPoint ? " floating point" : "");
}

void addHeaderRows(const PictureFacts& facts, InfoRows& rows) {
    const PictureHeader& header = *facts.header;
    if (header.pixelAspect != 1) {
        rows.emplace_back("pixel aspect", fmt::format("{:.6g}:1", header.pixelAspect));
    }
    for (const auto& [name, key] : {std::pair{"rate", "input/frame_rate"},
                                    {"time code", "input/timecode"},
                                    {"reel", "quicktime/reel"}}) {
        if (const std::string text = entryOf(facts, key); !text.empty()) {
            rows.emplace_back(name, name == std::string("rate") ? text + " frames a second" : cut(text));
        }
    }
    if (!header.colourSpace.empty()) {
        rows.emplace_back("colour space", cut(header.colourSpace));
    }
    if (header.chromaticities) {
        const std::array<float, 8>& xy = *header.chromaticities;
        rows.emplace_back("primaries",
                          fmt::format("red {:.4g} {:.4g}, green {:.4g} {:.4g}, blue {:.4g} {:.4g}, "
                                      "white {:.4g} {:.4g}",
                                      xy[0], xy[1], xy[2], xy[3], xy[4], xy[5], xy[6], xy[7]));
    }
}

void addStorageRows(const FilePart& part, InfoRows& rows) {
    rows.emplace_back("stored as", part.storage + (part.compression.empty() ? "" : ", " + part.compression));
    if (part.data != part.display || part.display.x != 0 || part.display.y != 0) {
        rows.emplace_back("data window", windowText(part.data));
        rows.emplace_back("display", windowText(part.display));
    }
}

InfoRows firstRows(const PictureFacts& facts) {
    const FileContents& contents = facts.contents;
    InfoRows rows;
    if (!facts.frames.empty()) {
        rows.emplace_back("frames",
                          fmt::format("{} ({} in all); what follows is of {}", frameRangeText(facts.frames),
                                      facts.frames.size(), facts.path));
    }
    rows.emplace_back(
        "file", contents.format +
                    (contents.parts.size() > 1 ? fmt::format(", {} parts", contents.parts.size()) : ""));
    rows.emplace_back("picture", facts.refusal.empty() ? pictureText(facts)
                                                       : "none unless you choose one: " + facts.refusal);
    if (facts.header) {
        addHeaderRows(facts, rows);
    }
    if (contents.parts.size() == 1) {
        addStorageRows(contents.parts.front(), rows);
    }
    if (!contents.views.empty()) {
        rows.emplace_back("views", listed(contents.views));
    }
    if (const std::vector<std::string> layers = layersOf(contents, ""); !layers.empty()) {
        rows.emplace_back("layers", listed(layers));
    }
    return rows;
}

void printText(const std::string& input, const PictureFacts& facts) {
    const FileContents& contents = facts.contents;
    fmt::print("{}\n", input);
    printRows("", firstRows(facts));
    for (std::size_t i = 0; i < contents.parts.size(); ++i) {
        const FilePart& part = contents.parts[i];
        InfoRows rows;
        std::string title = "Channels";
        if (contents.parts.size() > 1) {
            title = fmt::format("Part {}{}", i, part.name.empty() ? "" : ": " + cut(part.name));
            if (!part.view.empty()) {
                rows.emplace_back("view", cut(part.view));
            }
            addStorageRows(part, rows);
        }
        const InfoRows layers = layerRows(contents, part);
        rows.insert(rows.end(), layers.begin(), layers.end());
        printRows(title, rows);
    }
    InfoRows attributes;
    for (const auto& [name, value] : facts.header ? attributesOf(*facts.header) : Metadata()) {
        attributes.emplace_back(cut(name), cut(value));
    }
    if (!attributes.empty()) {
        printRows("Metadata", attributes);
    }
}

InfoJson windowJson(const Window& window) {
    return {{"x", window.x}, {"y", window.y}, {"width", window.width}, {"height", window.height}};
}

InfoJson partJson(const FileContents& contents, std::size_t number) {
    const FilePart& part = contents.parts[number];
    InfoJson channels = InfoJson::array();
    for (const StoredChannel& channel : part.channels) {
        const ChannelName name = splitChannelName(channel.name, part, contents.views);
        channels.push_back(
            {{"name", channel.name},
             {"type", channel.type},
             {"layer", textOrNull(name.layer.empty() ? layerOfPart(contents, part) : name.layer)},
             {"view", textOrNull(name.view)},
             {"subsampled", channel.subsampled}});
    }
    return {{"number", number},
            {"name", textOrNull(part.name)},
            {"view", textOrNull(part.view)},
            {"type", part.storage},
            {"deep", part.deep},
            {"compression", textOrNull(part.compression)},
            {"display_window", windowJson(part.display)},
            {"data_window", windowJson(part.data)},
            {"channels", channels}};
}

InfoJson jsonOf(const PictureFacts& facts) {
    InfoJson parts = InfoJson::array();
    for (std::size_t i = 0; i < facts.contents.parts.size(); ++i) {
        parts.push_back(partJson(facts.contents, i));
    }
    const PictureHeader header = facts.header.value_or(PictureHeader());
    const bool read = facts.refusal.empty();
    InfoJson document{
        {"path", facts.path},
        {"format", facts.contents.format},
        {"width", facts.header ? InfoJson(header.display.width) : InfoJson()},
        {"height", facts.header ? InfoJson(header.display.height) : InfoJson()},
        {"channels", read ? InfoJson(header.hasAlpha ? 4 : 3) : InfoJson()},
        {"bits", read ? InfoJson(header.bits) : InfoJson()},
        {"frames", std::max<std::size_t>(facts.frames.size(), 1)},
        {"first", facts.frames.empty() ? InfoJson() : InfoJson(facts.frames.front())},
        {"last", facts.frames.empty() ? InfoJson() : InfoJson(facts.frames.back())},
        {"missing", facts.missing},
        {"rate", textOrNull(entryOf(facts, "input/frame_rate"))},
        {"pixel_aspect", numberOrNull(header.pixelAspect)},
        {"timecode", textOrNull(entryOf(facts, "input/timecode"))},
        {"reel", textOrNull(entryOf(facts, "quicktime/reel"))},
        {"color_space", textOrNull(header.colourSpace)},
        {"chromaticities", header.chromaticities ? InfoJson(*header.chromaticities) : InfoJson()},
        {"refusal", textOrNull(facts.refusal)},
        {"views", facts.contents.views},
        {"layers", layersOf(facts.contents, "")},
        {"parts", parts},
        {"metadata", attributesOf(header)}};
    if (!document["rate"].is_null()) {
        document["rate"] = numberOrNull(std::strtod(entryOf(facts, "input/frame_rate").c_str(), nullptr));
    }
    return document;
}

}  // namespace

void printPictureInfo(const std::string& input, bool json) {
    const PictureFacts facts = factsOf(input);
    if (json) {
        printJson(jsonOf(facts));
    } else {
        printText(input, facts);
    }
}

}  // namespace Corvel
