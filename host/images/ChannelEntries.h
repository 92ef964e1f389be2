#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/images/ChannelLayout.h"
#include "host/images/FileContents.h"

namespace Corvel {

/// A channel that may be chosen: where it is and what it may be called.
struct ChannelEntry {
    int index = 0;  ///< among the part's channels
    ChannelName name;
    std::string stored;
};

using ChannelEntries = std::vector<ChannelEntry>;

/// Those channels of a part that belong to the view or to none; all of them for no view.
ChannelEntries entriesOf(const FileContents& contents, const FilePart& part, const std::string& view);

/// Those whose names say that layer; the empty text for none.
ChannelEntries ofLayer(const ChannelEntries& entries, const std::string& layer);

/// What `find`, one of ChannelLayout.h, says of the channels, as indices among the part's.
std::optional<ChannelLayout> layoutOf(const ChannelEntries& entries,
                                      std::optional<ChannelLayout> (*find)(const std::vector<std::string>&));

/// Plain colours, else those of the first layer that has some, else plain grey.
std::optional<ChannelLayout> coloursOf(const ChannelEntries& entries);

}  // namespace Corvel
