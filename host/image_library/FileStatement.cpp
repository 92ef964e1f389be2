#include "host/image_library/FileStatement.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "host/images/PackedTimecode.h"
#include "host/images/StatedValues.h"

namespace Corvel {
namespace {

// What the image library makes of the film and television parts of a DPX header (SMPTE 268M, tables 6 and 7).
constexpr const char* industryAttributes[] = {
    "dpx:FilmEdgeCode",
    "smpte:KeyCode",
    "dpx:Format",
    "dpx:FramePosition",
    "dpx:SequenceLength",
    "dpx:HeldCount",
    "dpx:FrameRate",
    "dpx:ShutterAngle",
    "dpx:FrameId",
    "dpx:SlateInfo",
    "smpte:TimeCode",
    "dpx:TimeCode",
    "dpx:UserBits",
    "dpx:Interlace",
    "dpx:FieldNumber",
    "dpx:Signal",
    "dpx:HorizontalSampleRate",
    "dpx:VerticalSampleRate",
    "dpx:TemporalFrameRate",
    "dpx:TimeOffset",
    "oiio:Gamma",
    "dpx:BlackLevel",
    "dpx:BlackGain",
    "dpx:BreakPoint",
    "dpx:WhiteLevel",
    "dpx:IntegrationTimes",
};

bool contains(const std::string& text, const char* part) {
    return OIIO::Strutil::icontains(text, part);
}

// The transfer characteristics that the image library does not translate into a colour space. Printing
// density is what film scanners write for their logarithmic values (SMPTE 268M, table of transfer
// characteristics).
std::string curveOfDpxTransfer(const std::string& transfer) {
    if (contains(transfer, "density") || contains(transfer, "log")) {
        return "cineon";
    }
    if (contains(transfer, "linear")) {
        return "linear";
    }
    if (contains(transfer, "ITU-R") || contains(transfer, "SMPTE")) {
        return "rec709";
    }
    return "";
}

std::string rateOf(const OIIO::ImageSpec& spec) {
    if (const OIIO::ParamValue* ratio = spec.find_attribute("FramesPerSecond", OIIO::TypeRational)) {
        const int* parts = static_cast<const int*>(ratio->data());
        return parts[1] == 0 ? "" : rateText(static_cast<double>(parts[0]) / parts[1]);
    }
    // The film header's rate, else the television header's.
    const std::string film = rateText(spec.get_float_attribute("dpx:FrameRate"));
    return film.empty() ? rateText(spec.get_float_attribute("dpx:TemporalFrameRate")) : film;
}

}  // namespace

std::string curveOf(const OIIO::ImageSpec& spec) {
    std::string curve = curveOfColorSpace(spec.get_string_attribute("oiio:ColorSpace"));
    if (curve.empty()) {
        curve = curveOfDpxTransfer(spec.get_string_attribute("dpx:Transfer"));
    }
    if (curve.empty()) {
        curve = spec.format.is_floating_point() ? "linear" : "srgb";
    }
    return curve;
}

std::string colourSpaceOf(const OIIO::ImageSpec& spec) {
    for (const char* name : {"colorInteropID", "colorSpace"}) {
        if (const std::string space = spec.get_string_attribute(name); !space.empty()) {
            return space;
        }
    }
    const std::string space = spec.get_string_attribute("oiio:ColorSpace");
    const bool guessed =
        space == "Linear" || space == "sRGB" || space == "scene_linear" || space == "lin_srgb";
    return guessed ? "" : space;
}

std::optional<std::array<float, 8>> chromaticitiesOf(const OIIO::ImageSpec& spec) {
    const OIIO::TypeDesc type(OIIO::TypeDesc::FLOAT, 8);
    const OIIO::ParamValue* const stated = spec.find_attribute("chromaticities", type);
    if (!stated) {
        return std::nullopt;
    }
    std::array<float, 8> values{};
    std::copy_n(static_cast<const float*>(stated->data()), values.size(), values.begin());
    return values;
}

void forgetIndustryPart(OIIO::ImageSpec& spec) {
    for (const char* name : industryAttributes) {
        spec.erase_attribute(name);
    }
}

Metadata attributesOf(const OIIO::ImageSpec& spec) {
    Metadata attributes;
    for (const OIIO::ParamValue& attribute : spec.extra_attribs) {
        if (attribute.type() == OIIO::TypeString || attribute.type() == OIIO::TypeInt ||
            attribute.type() == OIIO::TypeFloat) {
            attributes[attribute.name().string()] = attribute.get_string();
        }
    }
    return attributes;
}

Metadata metadataOf(const OIIO::ImageSpec& spec) {
    Metadata metadata;
    const auto set = [&metadata](const char* key, const std::string& value) {
        if (!value.empty()) {
            metadata[key] = value;
        }
    };
    set("input/timecode", spec.get_string_attribute("timecode"));
    if (const OIIO::ParamValue* timecode = spec.find_attribute("smpte:TimeCode", OIIO::TypeTimeCode)) {
        const double rate = std::strtod(rateOf(spec).c_str(), nullptr);
        set("input/timecode", unpackTimecode(*static_cast<const std::uint32_t*>(timecode->data()), rate));
    }
    set("quicktime/reel", spec.get_string_attribute("dpx:InputDevice"));
    set("quicktime/reel", spec.get_string_attribute("reelName"));
    set("input/frame_rate", rateOf(spec));
    return metadata;
}

}  // namespace Corvel
