#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Corvel {

/// Which channels of a file are red, green, blue and alpha: indices into the file's list of channel names.
/// Red, green and blue are the same one for a grey picture; alpha is -1 where there is none.
struct ChannelLayout {
    int red = 0;
    int green = 0;
    int blue = 0;
    int alpha = -1;

    /// The first and one past the last channel that a reader must decode.
    int begin() const;
    int end() const;

    bool operator==(const ChannelLayout&) const = default;
};

/// Finds them by names that have no layer any more, letter case ignored, in any order among any others: R, G,
/// B, A (or red, green, blue, alpha); else Y (luminance) as grey; else R alone as grey. Nothing where there
/// is no colour.
std::optional<ChannelLayout> findColours(const std::vector<std::string>& names);

/// X, Y and Z as red, green and blue: normals and positions, which a person may want to see as colours.
std::optional<ChannelLayout> findDirections(const std::vector<std::string>& names);

/// Where names say nothing: the first three channels, or the first one as grey, with alpha if one is called
/// so. `names` must not be empty.
ChannelLayout firstChannels(const std::vector<std::string>& names);

}  // namespace Corvel
