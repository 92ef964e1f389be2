#include "host/images/ChannelLayout.h"

#include <algorithm>
#include <cctype>
#include <initializer_list>

namespace Corvel {
namespace {

struct Name {
    std::string layer;  // without the last dot; empty outside of any layer
    std::string channel;
};

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

std::vector<Name> splitNames(const std::vector<std::string>& names) {
    std::vector<Name> split;
    for (const std::string& name : names) {
        const std::size_t dot = name.rfind('.');
        if (dot == std::string::npos) {
            split.push_back({"", lowered(name)});
        } else {
            split.push_back({name.substr(0, dot), lowered(name.substr(dot + 1))});
        }
    }
    return split;
}

int indexOf(const std::vector<Name>& names, const std::string& layer,
            std::initializer_list<const char*> wanted) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i].layer == layer &&
            std::find(wanted.begin(), wanted.end(), names[i].channel) != wanted.end()) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

bool findColours(const std::vector<Name>& names, const std::string& layer, ChannelLayout& layout) {
    layout.red = indexOf(names, layer, {"r", "red"});
    layout.green = indexOf(names, layer, {"g", "green"});
    layout.blue = indexOf(names, layer, {"b", "blue"});
    layout.alpha = indexOf(names, layer, {"a", "alpha"});
    return layout.red >= 0 && layout.green >= 0 && layout.blue >= 0;
}

}  // namespace

int ChannelLayout::begin() const {
    const int colours = std::min({red, green, blue});
    return alpha < 0 ? colours : std::min(colours, alpha);
}

int ChannelLayout::end() const {
    return std::max({red, green, blue, alpha}) + 1;
}

ChannelLayout findChannels(const std::vector<std::string>& names) {
    const std::vector<Name> split = splitNames(names);
    ChannelLayout layout;
    if (findColours(split, "", layout)) {
        return layout;
    }
    for (const Name& name : split) {
        if (!name.layer.empty() && findColours(split, name.layer, layout)) {
            return layout;
        }
    }

    const int alpha = indexOf(split, "", {"a", "alpha"});
    const int grey = indexOf(split, "", {"y", "l", "luminance", "i"});
    if (grey >= 0) {
        return {grey, grey, grey, alpha};
    }
    if (names.size() < 3) {
        return {0, 0, 0, alpha > 0 ? alpha : -1};
    }
    return {0, 1, 2, alpha > 2 ? alpha : -1};
}

}  // namespace Corvel
