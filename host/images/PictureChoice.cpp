#include "host/images/PictureChoice.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

#include "host/images/ChannelEntries.h"
#include "host/images/NameMatch.h"

namespace Corvel {
namespace {

constexpr std::size_t alpha = 3;

// "part 1 (depth)"; nothing much for the only one.
std::string partText(const FileContents& contents, int part) {
    if (contents.parts.size() < 2) {
        return "it";
    }
    const std::string& name = contents.parts[static_cast<std::size_t>(part)].name;
    return name.empty() ? fmt::format("part {}", part) : fmt::format("part {} ({})", part, listed({name}));
}

std::optional<ChannelLayout> firstOf(const std::vector<std::string>& names) {
    return firstChannels(names);
}

class Chooser {
public:
    Chooser(const FileContents& file, const PictureChoice& wanted)
        : contents(file), choice(wanted), view(file.views.empty() ? "" : file.views.front()) {}

    ChosenPicture choose();

private:
    void narrow();
    int findPart() const;
    void useView(int part);
    std::optional<ChannelLayout> takeColours();
    std::optional<ChannelLayout> takeLayer();
    void takeChannels(ChosenPicture& chosen, bool mayMove) const;
    bool findChannel(const std::string& wanted, int within, bool exactly, ChosenPicture& found) const;
    [[noreturn]] void refuseChannel(const std::string& wanted) const;
    void checkReadable(int part) const;
    std::string instead(int refused) const;

    const FilePart& partAt(int part) const { return contents.parts[static_cast<std::size_t>(part)]; }
    ChannelEntries entries(int part) const { return entriesOf(contents, partAt(part), view); }
    /// The layer of an entry as it may be asked for.
    std::string layerOf(const ChannelEntry& entry, int part) const {
        return entry.name.layer.empty() ? layerOfPart(contents, partAt(part)) : entry.name.layer;
    }
    bool namesAllColours() const {
        return std::none_of(choice.channels.begin(), choice.channels.begin() + alpha,
                            [](const std::string& name) { return name.empty(); });
    }

    const FileContents& contents;
    const PictureChoice& choice;
    std::string view;
    std::vector<int> candidates;  // parts
    int base = 0;                 // the part whose colours are taken
};

int Chooser::findPart() const {
    std::vector<std::string> names;
    for (const FilePart& part : contents.parts) {
        names.push_back(part.name);
    }
    int part = findName(names, choice.part);
    const char* const end = choice.part.data() + choice.part.size();
    if (part < 0 && (std::from_chars(choice.part.data(), end, part).ptr != end || part < 0 ||
                     part >= static_cast<int>(names.size()))) {
        throw BadPictureChoice(fmt::format(
            "it has no part {} ({}){}", inQuotes(choice.part),
            names.size() == 1 ? "there is only part 0"
                              : fmt::format("parts: 0 to {}, {}", names.size() - 1, listed(names)),
            guessFor(names, choice.part)));
    }
    return part;
}

// The view that is wanted, in a file whose part `part` (or, for -1, none) has been chosen.
void Chooser::useView(int part) {
    const std::string own = part < 0 ? "" : partAt(part).view;
    if (choice.view.empty()) {
        view = own.empty() ? view : own;
        return;
    }
    const int found = findName(contents.views, choice.view);
    if (found < 0 && choice.viewIsInName) {
        view = own.empty() ? view : own;
        return;
    }
    if (contents.views.empty()) {
        throw BadPictureChoice(fmt::format(
            "it does not tell views apart, so it has no view {}; where each view has files of its own, %V in "
            "the name stands for the view",
            inQuotes(choice.view)));
    }
    if (found < 0) {
        throw BadPictureChoice(fmt::format("it has no view {} (views: {}){}", inQuotes(choice.view),
                                           listed(contents.views), guessFor(contents.views, choice.view)));
    }
    view = contents.views[static_cast<std::size_t>(found)];
    if (!own.empty() && own != view) {
        throw BadPictureChoice(fmt::format("{} belongs to the view {}, not {}", partText(contents, part),
                                           inQuotes(own), inQuotes(view)));
    }
}

// Settles part and view.
void Chooser::narrow() {
    if (contents.parts.empty()) {
        throw BadPictureChoice("it has no pictures");
    }
    if (!choice.part.empty()) {
        candidates = {findPart()};
        useView(candidates.front());
        return;
    }
    useView(-1);
    for (int part = 0; part < static_cast<int>(contents.parts.size()); ++part) {
        if (partAt(part).view.empty() || view.empty() || partAt(part).view == view) {
            candidates.push_back(part);
        }
    }
    if (candidates.empty()) {
        throw BadPictureChoice(fmt::format("none of its parts belongs to the view {}", inQuotes(view)));
    }
}

// What has colours and may be chosen instead of a part.
std::string Chooser::instead(int refused) const {
    std::vector<std::string> options;
    std::string single;
    for (int part = 0; part < static_cast<int>(contents.parts.size()); ++part) {
        const ChannelEntries all = partAt(part).deep ? ChannelEntries() : entries(part);
        for (const ChannelEntry& entry : all) {
            const std::optional<ChannelLayout> layout = layoutOf(ofLayer(all, entry.name.layer), findColours);
            const std::string layer = layerOf(entry, part);
            if (layout && (part != refused || !layer.empty())) {
                options.push_back(layer.empty() ? fmt::format("--part {}", part)
                                                : fmt::format("--layer {}", layer));
            }
            single = single.empty() ? entry.stored : single;
        }
    }
    if (!options.empty()) {
        return fmt::format("; colours are in {}", listed(options));
    }
    return single.empty() ? "" : fmt::format("; --channels {} shows a channel as grey", listed({single}));
}

void Chooser::checkReadable(int part) const {
    if (partAt(part).deep) {
        throw BadPictureChoice(fmt::format("{} has deep samples, which must be flattened first{}",
                                           partText(contents, part), instead(part)));
    }
    std::vector<std::string> subsampled;
    for (const StoredChannel& channel : partAt(part).channels) {
        if (channel.subsampled) {
            subsampled.push_back(channel.name);
        }
    }
    if (!subsampled.empty()) {
        const bool chroma = findName(subsampled, "RY") >= 0 || findName(subsampled, "BY") >= 0;
        throw BadPictureChoice(fmt::format(
            "{}{} not a sample for every pixel (channels {}), which is not read; convert it to RGB first",
            partText(contents, part), chroma ? " is stored as luminance and chroma, which has" : " has",
            listed(subsampled)));
    }
}

std::optional<ChannelLayout> Chooser::takeLayer() {
    std::vector<std::string> layers;
    for (const int part : candidates) {
        for (const ChannelEntry& entry : entries(part)) {
            layers.push_back(layerOf(entry, part));
        }
    }
    const int found = findName(layers, choice.layer);
    if (found < 0) {
        layers.erase(std::remove(layers.begin(), layers.end(), ""), layers.end());
        throw BadPictureChoice(fmt::format("it has no layer {} (layers: {}){}", inQuotes(choice.layer),
                                           listed(layers), guessFor(layers, choice.layer)));
    }
    const std::string layer = layers[static_cast<std::size_t>(found)];
    for (const int part : candidates) {
        ChannelEntries members = entries(part);
        members.erase(
            std::remove_if(members.begin(), members.end(),
                           [&](const ChannelEntry& entry) { return layerOf(entry, part) != layer; }),
            members.end());
        if (members.empty()) {
            continue;
        }
        base = part;
        const std::optional<ChannelLayout> colours = layoutOf(members, findColours);
        return colours ? colours : layoutOf(members, findDirections);
    }
    return std::nullopt;
}

std::optional<ChannelLayout> Chooser::takeColours() {
    base = candidates.front();
    if (!choice.layer.empty()) {
        return takeLayer();
    }
    const ChannelEntries all = entries(base);
    const std::optional<ChannelLayout> colours = coloursOf(all);
    return colours || contents.namesChannels || all.empty() ? colours : layoutOf(all, firstOf);
}

// Sets part and red of `found` to the channel of that name. One within a chosen layer goes before one that is
// called so in full.
bool Chooser::findChannel(const std::string& wanted, int within, bool exactly, ChosenPicture& found) const {
    const auto same = [&](const std::string& name) {
        return exactly ? name == wanted : lowered(name) == lowered(wanted);
    };
    const auto take = [&](int part, const auto& matches) {
        for (const ChannelEntry& entry : entries(part)) {
            if (matches(entry)) {
                found.part = part;
                found.layout.red = entry.index;
                return true;
            }
        }
        return false;
    };
    for (const int part : candidates) {
        if (within >= 0 && part != within) {
            continue;
        }
        const auto inLayer = [&](const ChannelEntry& entry) {
            return !choice.layer.empty() && lowered(layerOf(entry, part)) == lowered(choice.layer) &&
                   same(entry.name.channel);
        };
        const auto inFull = [&](const ChannelEntry& entry) {
            const std::string own = entry.name.layer.empty() ? "" : entry.name.layer + ".";
            const std::string asked = layerOf(entry, part) + ".";
            return same(own + entry.name.channel) || same(asked + entry.name.channel);
        };
        if (take(part, inLayer) || take(part, inFull) ||
            take(part, [&](const ChannelEntry& entry) { return same(entry.stored); })) {
            return true;
        }
    }
    return false;
}

void Chooser::refuseChannel(const std::string& wanted) const {
    std::vector<std::string> names;
    for (const int part : candidates) {
        for (const ChannelEntry& entry : entries(part)) {
            const std::string layer = layerOf(entry, part);
            names.push_back(layer.empty() ? entry.name.channel : layer + "." + entry.name.channel);
        }
    }
    throw BadPictureChoice(fmt::format("it has no channel {} (channels: {}){}", inQuotes(wanted),
                                       listed(names), guessFor(names, wanted)));
}

// Puts the named channels into the layout. `mayMove`: all of the picture is named, so that it may be in any
// part.
void Chooser::takeChannels(ChosenPicture& chosen, bool mayMove) const {
    const std::array<int*, 4> planes{&chosen.layout.red, &chosen.layout.green, &chosen.layout.blue,
                                     &chosen.layout.alpha};
    int within = mayMove ? -1 : chosen.part;
    for (std::size_t i = 0; i < planes.size(); ++i) {
        const std::string& name = choice.channels[i];
        if (name.empty()) {
            continue;
        }
        ChosenPicture found;
        const bool here = findChannel(name, within, true, found) || findChannel(name, within, false, found);
        if (!here && (findChannel(name, -1, true, found) || findChannel(name, -1, false, found))) {
            throw BadPictureChoice(fmt::format(
                "the channels of a picture come from one part, but {} is in {} and others are in {}",
                inQuotes(name), partText(contents, found.part), partText(contents, within)));
        }
        if (!here) {
            refuseChannel(name);
        }
        within = chosen.part = found.part;
        *planes[i] = found.layout.red;
    }
}

ChosenPicture Chooser::choose() {
    narrow();
    const bool all = namesAllColours();
    ChosenPicture chosen;
    if (all && choice.layer.empty()) {
        takeChannels(chosen, true);
        checkReadable(chosen.part);
        return chosen;
    }
    const std::optional<ChannelLayout> colours = takeColours();
    checkReadable(base);
    chosen.part = base;
    if (all) {
        takeChannels(chosen, false);
        return chosen;
    }
    if (!colours) {
        std::vector<std::string> names;
        for (const ChannelEntry& entry : entries(base)) {
            if (choice.layer.empty() || lowered(layerOf(entry, base)) == lowered(choice.layer)) {
                names.push_back(entry.stored);
            }
        }
        throw BadPictureChoice(fmt::format(
            "{} has no colours, only {}{}",
            choice.layer.empty() ? partText(contents, base) : "the layer " + inQuotes(choice.layer),
            listed(names), instead(base)));
    }
    chosen.layout = *colours;
    takeChannels(chosen, false);
    return chosen;
}

}  // namespace

ChosenPicture choosePicture(const FileContents& contents, const PictureChoice& choice) {
    return Chooser(contents, choice).choose();
}

std::string textOf(const FileContents& contents, const ChosenPicture& chosen) {
    const std::vector<StoredChannel>& channels =
        contents.parts[static_cast<std::size_t>(chosen.part)].channels;
    const ChannelLayout& layout = chosen.layout;
    std::vector<std::string> names;
    for (const int index : {layout.red, layout.green, layout.blue, layout.alpha}) {
        if (index >= 0) {
            names.push_back(channels[static_cast<std::size_t>(index)].name);
        }
    }
    const std::string part = contents.parts.size() < 2 ? "" : " of " + partText(contents, chosen.part);
    return listed(names) + part;
}

}  // namespace Corvel
