#include "host/images/StatedValues.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "host/images/NameMatch.h"

namespace Corvel {
namespace {

// The curve of a file that states a plain exponent, empty where we have no such curve.
std::string curveOfGamma(double gamma) {
    struct Known {
        double gamma;
        const char* curve;
    };
    for (const Known& known :
         {Known{1.0, "linear"}, {1.8, "gamma1.8"}, {2.2, "gamma2.2"}, {2.4, "gamma2.4"}}) {
        if (std::abs(gamma - known.gamma) < 0.05) {
            return known.curve;
        }
    }
    return "";
}

}  // namespace

std::string curveOfColorSpace(const std::string& space) {
    const std::string name = lowered(space);
    const auto contains = [&name](const char* part) { return name.find(part) != std::string::npos; };
    if (contains("srgb")) {
        return "srgb";
    }
    if (contains("linear")) {
        return "linear";
    }
    if (contains("709")) {
        return "rec709";
    }
    if (contains("log")) {
        return "cineon";
    }
    if (name.rfind("gamma", 0) == 0) {
        double gamma = 0;
        std::from_chars(name.data() + 5, name.data() + name.size(), gamma);
        return curveOfGamma(gamma);
    }
    return "";
}

std::string rateText(double rate) {
    return std::isfinite(rate) && rate > 0 ? fmt::format("{:.6g}", rate) : "";
}

}  // namespace Corvel
