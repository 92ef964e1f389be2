#pragma once

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
};

/// Finds them by name, letter case ignored, in any order among any others: R, G, B, A (or red, green, blue,
/// alpha) by themselves; else those of the first layer that has them ("beauty.R"); else Y (or a single
/// channel) as grey; else the first three channels. `names` must not be empty.
ChannelLayout findChannels(const std::vector<std::string>& names);

}  // namespace Corvel
