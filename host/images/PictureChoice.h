#pragma once

#include <array>
#include <stdexcept>
#include <string>

#include "host/images/ChannelLayout.h"
#include "host/images/FileContents.h"

namespace Corvel {

/// Which picture of a file with several a person wants. What is empty is settled by the file: its first part,
/// its first view, the colours outside of any layer.
struct PictureChoice {
    std::string part{};  ///< name, or number from 0
    std::string layer{};
    std::string view{};
    /// Set where the view was found by the file's name, so that the file itself need not know of it.
    bool viewIsInName = false;
    /// The channels that become red, green, blue and alpha. Where the three colours are all named, there is
    /// alpha only if it is named, too; else what is not named stays as it is in the layer.
    std::array<std::string, 4> channels{};

    bool operator==(const PictureChoice&) const = default;
    /// Whether nothing at all was chosen.
    bool isEmpty() const { return *this == PictureChoice(); }
};

/// A choice that cannot be made. `what()` says why and what there is instead, in one line without the file.
class BadPictureChoice : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The picture that was chosen: one part, and which of its channels are what.
struct ChosenPicture {
    int part = 0;
    ChannelLayout layout;  ///< indices into the part's channels
};

/// Finds the picture in a file. Throws BadPictureChoice for what isn't there and for what is no picture: deep
/// samples, luminance with chroma, channels without colours.
ChosenPicture choosePicture(const FileContents& contents, const PictureChoice& choice);

/// Says for people which picture that is, such as "beauty.R, beauty.G, beauty.B of part 1 (beauty)"; empty
/// for the plain colours of a file of one part.
std::string textOf(const FileContents& contents, const ChosenPicture& chosen);

}  // namespace Corvel
