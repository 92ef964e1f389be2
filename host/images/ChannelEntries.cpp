#include "host/images/ChannelEntries.h"

#include <algorithm>
#include <utility>

namespace Corvel {
namespace {

bool isGrey(const ChannelLayout& layout) {
    return layout.red == layout.green;
}

}  // namespace

ChannelEntries entriesOf(const FileContents& contents, const FilePart& part, const std::string& view) {
    ChannelEntries entries;
    for (std::size_t i = 0; i < part.channels.size(); ++i) {
        const std::string& stored = part.channels[i].name;
        ChannelName name = splitChannelName(stored, part, contents.views);
        if (name.view.empty() || view.empty() || name.view == view) {
            entries.push_back({static_cast<int>(i), std::move(name), stored});
        }
    }
    return entries;
}

std::optional<ChannelLayout> layoutOf(const ChannelEntries& entries,
                                      std::optional<ChannelLayout> (*find)(const std::vector<std::string>&)) {
    std::vector<std::string> names;
    names.reserve(entries.size());
    for (const ChannelEntry& entry : entries) {
        names.push_back(entry.name.channel);
    }
    const std::optional<ChannelLayout> found = find(names);
    if (!found) {
        return std::nullopt;
    }
    const auto index = [&](int i) { return i < 0 ? -1 : entries[static_cast<std::size_t>(i)].index; };
    return ChannelLayout{index(found->red), index(found->green), index(found->blue), index(found->alpha)};
}

ChannelEntries ofLayer(const ChannelEntries& entries, const std::string& layer) {
    ChannelEntries kept;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(kept),
                 [&](const ChannelEntry& entry) { return entry.name.layer == layer; });
    return kept;
}

std::optional<ChannelLayout> coloursOf(const ChannelEntries& entries) {
    const std::optional<ChannelLayout> plain = layoutOf(ofLayer(entries, ""), findColours);
    if (plain && !isGrey(*plain)) {
        return plain;
    }
    std::string tried;
    for (const ChannelEntry& entry : entries) {
        if (entry.name.layer == tried) {
            continue;
        }
        tried = entry.name.layer;
        const std::optional<ChannelLayout> layout = layoutOf(ofLayer(entries, tried), findColours);
        if (layout && !isGrey(*layout)) {
            return layout;
        }
    }
    return plain;
}

}  // namespace Corvel
