#include "host/images/ExrStatement.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <cstdlib>

#include "host/images/ExrContents.h"
#include "host/images/ExrFile.h"
#include "host/images/PackedTimecode.h"
#include "host/images/StatedValues.h"

namespace Corvel {
namespace {

// One part of a file. What concerns the whole shot may be stated by the first part alone.
struct Part {
    template <typename Value, typename Get>
    bool get(Get getAttribute, const char* name, Value& value) const {
        return getAttribute(file.context(), index, name, &value) == EXR_ERR_SUCCESS ||
               (index != 0 && getAttribute(file.context(), 0, name, &value) == EXR_ERR_SUCCESS);
    }
    std::string text(const char* name) const {
        const std::string own = exrText(file, index, name);
        return own.empty() && index != 0 ? exrText(file, 0, name) : own;
    }

    const ExrFile& file;
    int index;
};

std::string rateOf(const Part& part) {
    // The standard attribute, and what writers that go through the general image library call it.
    for (const char* name : {"framesPerSecond", "FramesPerSecond"}) {
        exr_attr_rational_t rate{};
        if (part.get(exr_attr_get_rational, name, rate) && rate.denom != 0) {
            return rateText(static_cast<double>(rate.num) / rate.denom);
        }
    }
    return "";
}

std::string timecodeOf(const Part& part, const std::string& rate) {
    exr_attr_timecode_t timecode{};
    if (part.get(exr_attr_get_timecode, "timeCode", timecode)) {
        return unpackTimecode(timecode.time_and_flags, std::strtod(rate.c_str(), nullptr));
    }
    return part.text("timecode");
}

Metadata metadataOf(const Part& part) {
    const std::string rate = rateOf(part);
    Metadata metadata{{"input/timecode", timecodeOf(part, rate)},
                      {"quicktime/reel", part.text("reelName")},
                      {"input/frame_rate", rate}};
    std::erase_if(metadata, [](const auto& entry) { return entry.second.empty(); });
    return metadata;
}

// What writers name the space of the values; the last one is the general image library's.
std::string colourSpaceOf(const Part& part) {
    for (const char* name : {"colorInteropID", "colorSpace", "oiio:ColorSpace"}) {
        if (const std::string space = part.text(name); !space.empty()) {
            return space;
        }
    }
    return "";
}

std::optional<std::array<float, 8>> chromaticitiesOf(const Part& part) {
    exr_attr_chromaticities_t stated{};
    if (!part.get(exr_attr_get_chromaticities, "chromaticities", stated)) {
        return std::nullopt;
    }
    return std::array{stated.red_x,  stated.red_y,  stated.green_x, stated.green_y,
                      stated.blue_x, stated.blue_y, stated.white_x, stated.white_y};
}

// Texts and numbers, as people and renderers leave them in headers.
Metadata attributesOf(const Part& part) {
    const exr_const_context_t file = part.file.context();
    Metadata attributes;
    std::int32_t count = 0;
    exr_get_attribute_count(file, part.index, &count);
    for (std::int32_t i = 0; i < count; ++i) {
        const exr_attribute_t* attribute = nullptr;
        if (exr_get_attribute_by_index(file, part.index, EXR_ATTR_LIST_FILE_ORDER, i, &attribute) !=
            EXR_ERR_SUCCESS) {
            continue;
        }
        if (attribute->type == EXR_ATTR_STRING) {
            attributes[attribute->name] = exrText(part.file, part.index, attribute->name);
        } else if (attribute->type == EXR_ATTR_INT) {
            attributes[attribute->name] = fmt::format("{}", attribute->i);
        } else if (attribute->type == EXR_ATTR_FLOAT) {
            attributes[attribute->name] = fmt::format("{:.6g}", attribute->f);
        }
    }
    return attributes;
}

bool isOrdinary(const Part& part) {
    exr_storage_t storage{};
    std::int32_t orientation = 1;
    exr_attr_get_int(part.file.context(), part.index, "Orientation", &orientation);
    return exr_get_storage(part.file.context(), part.index, &storage) == EXR_ERR_SUCCESS &&
           storage == EXR_STORAGE_SCANLINE && orientation == 1;
}

// The channels that make the picture, and what they are stored as.
void describeChannels(const FilePart& part, const ChannelLayout& layout, ExrStatement& statement) {
    const auto channel = [&](int index) -> const StoredChannel& {
        return part.channels[static_cast<std::size_t>(index)];
    };
    PictureHeader& header = statement.header;
    header.hasAlpha = layout.alpha >= 0;
    header.bits = 16;
    const std::array indices{layout.red, layout.green, layout.blue, layout.alpha};
    for (std::size_t plane = 0; plane < (header.hasAlpha ? 4 : 3); ++plane) {
        statement.channels[plane] = channel(indices[plane]).name;
        header.bits = channel(indices[plane]).type == "half" ? header.bits : 32;
    }
    header.floatingPoint = channel(layout.red).type != "uint";
}

}  // namespace

std::optional<ExrStatement> stateOf(const ExrFile& file, const FileContents& contents,
                                    const ChosenPicture& chosen) {
    const Part part{file, chosen.part};
    const FilePart& stored = contents.parts[static_cast<std::size_t>(chosen.part)];
    if (!isOrdinary(part) || !isPictureSize(stored.display.width, stored.display.height) ||
        !isPictureSize(stored.data.width, stored.data.height)) {
        return std::nullopt;
    }
    ExrStatement statement;
    statement.part = chosen.part;
    describeChannels(stored, chosen.layout, statement);
    PictureHeader& header = statement.header;
    header.display = stored.display;
    header.data = stored.data;
    float aspect = 1;
    exr_get_pixel_aspect_ratio(file.context(), chosen.part, &aspect);
    header.pixelAspect = std::isfinite(aspect) && aspect > 0 ? aspect : 1.0;
    header.curve = curveOfColorSpace(part.text("oiio:ColorSpace"));
    if (header.curve.empty()) {
        header.curve = "linear";
    }
    header.colourSpace = colourSpaceOf(part);
    header.chromaticities = chromaticitiesOf(part);
    header.metadata = metadataOf(part);
    header.attributes = attributesOf(part);
    header.picked = textOf(contents, chosen);
    return statement;
}

}  // namespace Corvel
