#include "host/colour_library/InputSpace.h"

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
        return {"Cineon", "ADX10", "Input - ADX - ADX10", "compositing_log"};
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
        return {config.space(asked), "as asked for"};
    }
    const auto& library = config.library();
    const std::string byRule = library->getColorSpaceFromFilepath(input.path.c_str());
    if (!library->filepathOnlyMatchesDefaultRule(input.path.c_str())) {
        return {config.space(byRule), "by a file rule"};
    }
    const PictureHeader& header = input.header;
    if (const std::string stated = config.firstOf({header.colourSpace});
        !header.colourSpace.empty() && !stated.empty()) {
        return {stated, "by the file's metadata"};
    }
    if (header.chromaticities) {
        if (const std::string space = spaceOfChromaticities(config, *header.chromaticities); !space.empty()) {
            return {space, "by the file's chromaticities"};
        }
    }
    if (!header.floatingPoint) {
        if (const std::string space = config.firstOf(namesOfCurve(header.curve)); !space.empty()) {
            return {space, "as usual for such files"};
        }
    }
    return {config.space(byRule), "by the default file rule"};
}

}  // namespace Corvel
