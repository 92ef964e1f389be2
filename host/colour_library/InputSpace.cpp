#include "host/colour_library/InputSpace.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace Corvel {
namespace {

using Names = std::vector<std::string>;

// Primaries and white, x and y each, and what configurations call linear light with them.
struct KnownPrimaries {
    std::array<float, 8> chromaticities;
    Names names;
};

// Their places in the list.
constexpr std::size_t rec709 = 2;
constexpr std::size_t p3d65 = 3;
constexpr std::size_t rec2020 = 4;

const std::vector<KnownPrimaries>& knownPrimaries() {
    static const std::vector<KnownPrimaries> known{
        {{0.7347F, 0.2653F, 0, 1, 0.0001F, -0.077F, 0.32168F, 0.33767F},  // SMPTE ST 2065-1
         {"ACES2065-1", "lin_ap0", "ACES - ACES2065-1", "aces_interchange"}},
        {{0.713F, 0.293F, 0.165F, 0.83F, 0.128F, 0.044F, 0.32168F, 0.33767F},  // ACEScg
         {"ACEScg", "lin_ap1", "ACES - ACEScg"}},
        {{0.64F, 0.33F, 0.30F, 0.60F, 0.15F, 0.06F, 0.3127F, 0.3290F},  // ITU-R BT.709
         {"Linear Rec.709 (sRGB)", "lin_rec709_srgb", "lin_rec709", "lin_srgb", "Utility - Linear - sRGB",
          "Linear Rec.709", "Utility - Linear - Rec.709"}},
        {{0.68F, 0.32F, 0.265F, 0.69F, 0.15F, 0.06F, 0.3127F, 0.3290F},  // SMPTE EG 432-1
         {"Linear P3-D65", "lin_p3d65", "Utility - Linear - P3-D65"}},
        {{0.708F, 0.292F, 0.170F, 0.797F, 0.131F, 0.046F, 0.3127F, 0.3290F},  // ITU-R BT.2020
         {"Linear Rec.2020", "lin_rec2020", "Utility - Linear - Rec.2020"}}};
    return known;
}

// What configurations call ordinary images whose values have that curve (Kex::Image::LUT).
Names namesOfCurve(const std::string& curve) {
    if (curve == "srgb") {
        return {"sRGB - Texture",           "srgb_tx", "srgb_texture",
                "Utility - sRGB - Texture", "sRGB",    "texture_paint"};
    }
    if (curve == "rec709") {
        return {"Rec.709 - Camera", "rec709_camera", "Utility - Rec.709 - Camera", "Rec.709", "rec709"};
    }
    if (curve == "cineon") {
        return {"Cineon",
                "Film log",
                "film_log",
                "KodakLog",
                "Cineon Log Curve",
                "lin_to_log",
                "Utility - Log - Cineon",
                "ADX10",
                "Input - ADX - ADX10"};
    }
    if (curve == "linear") {
        return knownPrimaries()[rec709].names;
    }
    return {};
}

// Values that a movie's tags know, and what configurations call them: finished pictures are those of a
// display.
struct KnownTags {
    const char* primaries;
    const char* transfer;
    Names names;
};

const std::vector<KnownTags>& knownTags() {
    static const std::vector<KnownTags> known{
        {"bt709",
         "iec61966-2-1",
         {"sRGB - Display", "srgb_display", "sRGB Encoded Rec.709 (sRGB)", "srgb_rec709_display",
          "sRGB - Texture", "srgb_tx", "Output - sRGB", "Utility - sRGB - Texture", "sRGB"}},
        {"bt709",
         "bt709",
         {"Rec.1886 Rec.709 - Display", "rec1886_rec709_display", "g24_rec709_display", "Rec.709 Display",
          "Output - Rec.709", "Rec.709 - Camera", "Utility - Rec.709 - Camera", "Rec.709", "rec709"}},
        {"bt709",
         "gamma22",
         {"Gamma 2.2 Rec.709 - Display", "g22_rec709_display", "Gamma 2.2 Rec.709 - Texture",
          "g22_rec709_tx"}},
        {"bt2020",
         "bt709",
         {"Rec.1886 Rec.2020 - Display", "rec1886_rec2020_display", "Output - Rec.2020", "Rec.2020 - Camera",
          "Utility - Rec.2020 - Camera", "Rec.2020"}},
        {"bt2020",
         "smpte2084",
         {"Rec.2100-PQ - Display", "rec2100_pq_display", "Rec.2100-PQ", "ST2084 Rec.2020 - Display",
          "Output - Rec.2020 ST2084 (1000 nits)"}},
        {"bt2020",
         "arib-std-b67",
         {"Rec.2100-HLG - Display", "rec2100_hlg_display", "Rec.2100-HLG",
          "Output - Rec.2020 HLG (1000 nits)"}},
        {"smpte432",
         "iec61966-2-1",
         {"Display P3 - Display", "displayp3_display", "srgb_p3d65_display", "Display P3 - Texture",
          "p3d65_tx", "srgb_p3d65_tx", "Display P3"}},
        {"smpte432",
         "smpte428",
         {"P3-D65 - Display", "p3d65_display", "g26_p3d65_display", "Output - P3D65"}},
        {"smpte431", "smpte428", {"P3-DCI - Display", "g26_p3dci_display", "Output - P3DCI"}},
        {"smpte432",
         "smpte2084",
         {"ST2084-P3-D65 - Display", "st2084_p3d65_display", "Output - P3D65 ST2084 (1000 nits)"}},
        {"bt709", "linear", knownPrimaries()[rec709].names},
        {"smpte432", "linear", knownPrimaries()[p3d65].names},
        {"bt2020", "linear", knownPrimaries()[rec2020].names}};
    return known;
}

// The curves of standard and high definition and of BT.2020 are one curve.
std::string plainTransfer(const std::string& transfer) {
    const bool same = transfer == "smpte170m" || transfer == "bt2020-10" || transfer == "bt2020-12";
    return same ? "bt709" : transfer;
}

Names namesOfTags(const PictureHeader& header) {
    for (const KnownTags& known : knownTags()) {
        if (header.primaries == known.primaries && plainTransfer(header.transfer) == known.transfer) {
            return known.names;
        }
    }
    return {};
}

std::string spaceOfChromaticities(const ColourConfig& config, const std::array<float, 8>& stated) {
    for (const KnownPrimaries& known : knownPrimaries()) {
        const bool same = std::equal(stated.begin(), stated.end(), known.chromaticities.begin(),
                                     [](float a, float b) { return std::abs(a - b) < 0.0006F; });
        if (same) {
            return config.firstOf(known.names);
        }
    }
    return "";
}

}  // namespace

InputSpace findInputSpace(const ColourConfig& config, const std::string& asked, const ColourInput& input) {
    if (!asked.empty()) {
        return {config.space(asked), "as asked for", ""};
    }
    const auto& library = config.library();
    const std::string byRule = library->getColorSpaceFromFilepath(input.path.c_str());
    if (!library->filepathOnlyMatchesDefaultRule(input.path.c_str())) {
        return {config.space(byRule), "by a file rule", ""};
    }
    const PictureHeader& header = input.header;
    if (const std::string stated = config.firstOf({header.colourSpace});
        !header.colourSpace.empty() && !stated.empty()) {
        return {stated, "by the file's metadata", ""};
    }
    if (header.chromaticities) {
        if (const std::string space = spaceOfChromaticities(config, *header.chromaticities); !space.empty()) {
            return {space, "by the file's chromaticities", ""};
        }
    }
    InputSpace found{config.space(byRule), "by the default file rule", ""};
    if (!header.primaries.empty() || !header.transfer.empty()) {
        if (const std::string space = config.firstOf(namesOfTags(header)); !space.empty()) {
            return {space, fmt::format("by the movie's tags {} and {}", header.primaries, header.transfer),
                    ""};
        }
        found.doubt = fmt::format("no space is known for a movie whose tags are {} and {}",
                                  header.primaries.empty() ? "no primaries" : header.primaries,
                                  header.transfer.empty() ? "no transfer" : header.transfer);
    }
    if (!header.floatingPoint) {
        if (const std::string space = config.firstOf(namesOfCurve(header.curve)); !space.empty()) {
            const bool isFilm = header.curve == "cineon";
            return {space, isFilm ? "by the file's printing densities" : "as usual for such files",
                    found.doubt};
        }
        if (found.doubt.empty()) {
            found.doubt = fmt::format("no space is known for values with the curve {}", header.curve);
        }
    }
    return found;
}

}  // namespace Corvel
