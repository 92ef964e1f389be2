#include "host/images/ChannelLayout.h"

#include <algorithm>
#include <initializer_list>

#include "host/images/NameMatch.h"

namespace Corvel {
namespace {

int indexOf(const std::vector<std::string>& names, std::initializer_list<const char*> wanted) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (std::find(wanted.begin(), wanted.end(), lowered(names[i])) != wanted.end()) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

}  // namespace

int ChannelLayout::begin() const {
    const int colours = std::min({red, green, blue});
    return alpha < 0 ? colours : std::min(colours, alpha);
}

int ChannelLayout::end() const {
    return std::max({red, green, blue, alpha}) + 1;
}

std::optional<ChannelLayout> findColours(const std::vector<std::string>& names) {
    const ChannelLayout layout{indexOf(names, {"r", "red"}), indexOf(names, {"g", "green"}),
                               indexOf(names, {"b", "blue"}), indexOf(names, {"a", "alpha"})};
    if (layout.red >= 0 && layout.green >= 0 && layout.blue >= 0) {
        return layout;
    }
    // Y among X and Z is no luminance.
    int grey = findDirections(names) ? -1 : indexOf(names, {"y", "l", "luminance", "i"});
    if (grey < 0 && layout.green < 0 && layout.blue < 0) {
        grey = layout.red;
    }
    if (grey < 0) {
        return std::nullopt;
    }
    return ChannelLayout{grey, grey, grey, layout.alpha};
}

std::optional<ChannelLayout> findDirections(const std::vector<std::string>& names) {
    const ChannelLayout layout{indexOf(names, {"x"}), indexOf(names, {"y"}), indexOf(names, {"z"}), -1};
    const bool all = layout.red >= 0 && layout.green >= 0 && layout.blue >= 0;
    return all ? std::optional(layout) : std::nullopt;
}

ChannelLayout firstChannels(const std::vector<std::string>& names) {
    const int alpha = indexOf(names, {"a", "alpha"});
    if (names.size() < 3) {
        return {0, 0, 0, alpha > 0 ? alpha : -1};
    }
    return {0, 1, 2, alpha > 2 ? alpha : -1};
}

}  // namespace Corvel
