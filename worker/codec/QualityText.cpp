#include "worker/codec/QualityText.h"

#include "worker/codec/SettingsText.h"

#include <fmt/format.h>

namespace Morvane::Worker {

namespace {

constexpr const char* names[] = {"Min", "Low", "Normal", "High", "Max", "Lossless"};

std::string describeOption(const std::string& key, const std::string& value) {
    if (key == "qscale")
        return "quantiser " + value;
    if (key == "crf")
        return "rate factor " + value;
    if (key == "b")
        return value.substr(0, value.size() - 1) + " Mbit/s";
    if (key == "compression_level" && value != "0")
        return value + ":1";
    if (key == "qp" || key == "lossless" || key == "compression_level")
        return "lossless";
    return key + " " + value;
}

std::string describeQuality(const Codec& codec, int quality) {
    std::string text;
    for (const auto& [key, value] : parseSettingPairs(codec.quality[quality]))
        text += (text.empty() ? "" : ", ") + describeOption(key, value);
    return text;
}

}  // namespace

std::string describeQualities(const Codec& codec) {
    if (!codec.hasQuality())
        return codec.lossless == Lossless::Always ? "lossless at every quality" : "the same at every quality";
    std::string text;
    for (int quality = 0; quality < 6; ++quality)
        text += fmt::format("{}{}: {}", text.empty() ? "" : "; ", names[quality],
                            describeQuality(codec, quality));
    return text;
}

}  // namespace Morvane::Worker
