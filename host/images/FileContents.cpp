#include "host/images/FileContents.h"

#include <algorithm>

namespace Corvel {
namespace {

bool isAmong(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// The view that stands in a layer's name, just before the channel or at the beginning, taken out of it.
std::string takeView(std::string& layer, const std::vector<std::string>& views) {
    const std::size_t last = layer.rfind('.');
    const std::string inner = last == std::string::npos ? layer : layer.substr(last + 1);
    if (isAmong(views, inner)) {
        layer.erase(last == std::string::npos ? 0 : last);
        return inner;
    }
    const std::size_t first = layer.find('.');
    const std::string outer = layer.substr(0, first);
    if (first != std::string::npos && isAmong(views, outer)) {
        layer.erase(0, first + 1);
        return outer;
    }
    return "";
}

}  // namespace

ChannelName splitChannelName(const std::string& name, const FilePart& part,
                             const std::vector<std::string>& views) {
    const std::size_t dot = name.rfind('.');
    ChannelName split;
    split.layer = dot == std::string::npos ? "" : name.substr(0, dot);
    split.channel = dot == std::string::npos ? name : name.substr(dot + 1);
    if (!views.empty()) {
        split.view = split.layer.empty() ? views.front() : takeView(split.layer, views);
    }
    if (!part.view.empty()) {
        split.view = part.view;
    }
    return split;
}

std::string layerOfPart(const FileContents& contents, const FilePart& part) {
    if (contents.parts.size() < 2) {
        return "";
    }
    std::string name = part.name;
    const std::string view = takeView(name, contents.views);
    return view.empty() && isAmong(contents.views, name) ? "" : name;
}

std::vector<std::string> layersOf(const FileContents& contents, const std::string& view) {
    std::vector<std::string> layers;
    const auto add = [&](const std::string& layer) {
        if (!layer.empty() && !isAmong(layers, layer)) {
            layers.push_back(layer);
        }
    };
    for (const FilePart& part : contents.parts) {
        if (!view.empty() && !part.view.empty() && part.view != view) {
            continue;
        }
        for (const StoredChannel& channel : part.channels) {
            const ChannelName name = splitChannelName(channel.name, part, contents.views);
            if (view.empty() || name.view.empty() || name.view == view) {
                add(name.layer.empty() ? layerOfPart(contents, part) : name.layer);
            }
        }
    }
    return layers;
}

}  // namespace Corvel
