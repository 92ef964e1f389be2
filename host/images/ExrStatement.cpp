#include "host/images/ExrStatement.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "host/images/ExrFile.h"
#include "host/images/PackedTimecode.h"
#include "host/images/StatedValues.h"

namespace Corvel {
namespace {

std::string textOf(exr_const_context_t file, const char* name) {
    std::int32_t length = 0;
    const char* text = nullptr;
    if (exr_attr_get_string(file, 0, name, &length, &text) != EXR_ERR_SUCCESS) {
        return "";
    }
    return {text, static_cast<std::size_t>(length)};
}

std::string rateOf(exr_const_context_t file) {
    // The standard attribute, and what writers that go through the general image library call it.
    for (const char* name : {"framesPerSecond", "FramesPerSecond"}) {
        exr_attr_rational_t rate{};
        if (exr_attr_get_rational(file, 0, name, &rate) == EXR_ERR_SUCCESS && rate.denom != 0) {
            return rateText(static_cast<double>(rate.num) / rate.denom);
        }
    }
    return "";
}

std::string timecodeOf(exr_const_context_t file, const std::string& rate) {
    exr_attr_timecode_t timecode{};
    if (exr_attr_get_timecode(file, 0, "timeCode", &timecode) == EXR_ERR_SUCCESS) {
        return unpackTimecode(timecode.time_and_flags, std::strtod(rate.c_str(), nullptr));
    }
    return textOf(file, "timecode");
}

Metadata metadataOf(exr_const_context_t file) {
    const std::string rate = rateOf(file);
    Metadata metadata{{"input/timecode", timecodeOf(file, rate)},
                      {"quicktime/reel", textOf(file, "reelName")},
                      {"input/frame_rate", rate}};
    std::erase_if(metadata, [](const auto& entry) { return entry.second.empty(); });
    return metadata;
}

// What writers name the space of the values; the last one is the general image library's.
std::string colourSpaceOf(exr_const_context_t file) {
    for (const char* name : {"colorInteropID", "colorSpace", "oiio:ColorSpace"}) {
        if (const std::string space = textOf(file, name); !space.empty()) {
            return space;
        }
    }
    return "";
}

std::optional<std::array<float, 8>> chromaticitiesOf(exr_const_context_t file) {
    exr_attr_chromaticities_t stated{};
    if (exr_attr_get_chromaticities(file, 0, "chromaticities", &stated) != EXR_ERR_SUCCESS) {
        return std::nullopt;
    }
    return std::array{stated.red_x,  stated.red_y,  stated.green_x, stated.green_y,
                      stated.blue_x, stated.blue_y, stated.white_x, stated.white_y};
}

// Texts and numbers, as people and renderers leave them in headers.
Metadata attributesOf(exr_const_context_t file) {
    Metadata attributes;
    std::int32_t count = 0;
    exr_get_attribute_count(file, 0, &count);
    for (std::int32_t i = 0; i < count; ++i) {
        const exr_attribute_t* attribute = nullptr;
        if (exr_get_attribute_by_index(file, 0, EXR_ATTR_LIST_FILE_ORDER, i, &attribute) != EXR_ERR_SUCCESS) {
            continue;
        }
        if (attribute->type == EXR_ATTR_STRING) {
            attributes[attribute->name] = textOf(file, attribute->name);
        } else if (attribute->type == EXR_ATTR_INT) {
            attributes[attribute->name] = fmt::format("{}", attribute->i);
        } else if (attribute->type == EXR_ATTR_FLOAT) {
            attributes[attribute->name] = fmt::format("{:.6g}", attribute->f);
        }
    }
    return attributes;
}

bool isOrdinary(exr_const_context_t file) {
    exr_storage_t storage{};
    std::int32_t orientation = 1;
    exr_attr_get_int(file, 0, "Orientation", &orientation);
    return exr_get_storage(file, 0, &storage) == EXR_ERR_SUCCESS && storage == EXR_STORAGE_SCANLINE &&
           orientation == 1;
}

bool readWindows(exr_const_context_t file, PictureHeader& header) {
    exr_attr_box2i_t display{};
    exr_attr_box2i_t data{};
    if (exr_get_display_window(file, 0, &display) != EXR_ERR_SUCCESS ||
        exr_get_data_window(file, 0, &data) != EXR_ERR_SUCCESS) {
        return false;
    }
    const auto fits = [](const std::optional<Window>& window) {
        return window && 16.0 * window->width * window->height <= std::numeric_limits<std::int32_t>::max();
    };
    const std::optional<Window> shown = exrWindow(display);
    const std::optional<Window> stored = exrWindow(data);
    if (!fits(shown) || !fits(stored)) {
        return false;
    }
    header.display = *shown;
    header.data = *stored;
    return true;
}

bool readChannels(exr_const_context_t file, ExrStatement& statement) {
    const exr_attr_chlist_t* list = nullptr;
    if (exr_get_channels(file, 0, &list) != EXR_ERR_SUCCESS) {
        return false;
    }
    const auto begin = list->entries;
    const auto end = list->entries + list->num_channels;
    const auto has = [&](const char* name) {
        return std::any_of(begin, end,
                           [&](const auto& entry) { return std::strcmp(entry.name.str, name) == 0; });
    };
    if (!has("R") || !has("G") || !has("B")) {
        return false;
    }
    statement.header.hasAlpha = has("A");
    statement.channels = {"R", "G", "B", statement.header.hasAlpha ? "A" : ""};
    const bool halves =
        std::all_of(begin, end, [](const auto& entry) { return entry.pixel_type == EXR_PIXEL_HALF; });
    statement.header.bits = halves ? 16 : 32;
    statement.header.floatingPoint = true;
    return true;
}

}  // namespace

std::optional<ExrStatement> stateOf(const ExrFile& file) {
    const exr_const_context_t context = file.context();
    ExrStatement statement;
    PictureHeader& header = statement.header;
    if (!isOrdinary(context) || !readWindows(context, header) || !readChannels(context, statement)) {
        return std::nullopt;
    }
    float aspect = 1;
    exr_get_pixel_aspect_ratio(context, 0, &aspect);
    header.pixelAspect = std::isfinite(aspect) && aspect > 0 ? aspect : 1.0;
    header.curve = curveOfColorSpace(textOf(context, "oiio:ColorSpace"));
    if (header.curve.empty()) {
        header.curve = "linear";
    }
    header.colourSpace = colourSpaceOf(context);
    header.chromaticities = chromaticitiesOf(context);
    header.metadata = metadataOf(context);
    header.attributes = attributesOf(context);
    return statement;
}

}  // namespace Corvel
