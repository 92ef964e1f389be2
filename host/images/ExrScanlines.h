#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/images/Picture.h"

struct libdeflate_decompressor;

namespace Corvel {

class ExrFile;

/// Decodes the pixels of ordinary OpenEXR files in a fraction of the general reader's time: parts
/// in scanlines, not compressed or with ZIP or ZIPS, without
/// subsampled channels. What renderers write for compositing is of that kind. Any other file is left to the
/// general reader.
///
/// Keeps its memory from file to file. One thread at a time; starts none itself.
class ExrScanlines {
public:
    ExrScanlines();
    ~ExrScanlines();

    /// The names of the file's channels that become red, green, blue and, for a picture with alpha, alpha.
    using ChannelNames = std::array<std::string, 4>;

    /// Decodes that part of `file`, which is open, into `picture`, whose size and channels are those of the
    /// wanted result: the values as stored, the data window laid where it belongs in `display`, pixels
    /// outside of it cropped. Samples of the picture that the file does not cover are left alone. A picture
    /// of codes, which must be half floats, takes them as they are stored.
    ///
    /// False where the file is not of the kind described, or has not only halves for a picture of codes, with
    /// the picture untouched. Throws UnreadableImage for a file that is cut short or damaged; the picture's
    /// samples are arbitrary then.
    bool read(const ExrFile& file, int part, const ChannelNames& names, const Window& display,
              Picture& picture);

private:
    std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> decompressor;
    std::vector<std::uint8_t> packed;    // a block as it is in the file
    std::vector<std::uint8_t> inflated;  // the same, inflated
};

}  // namespace Corvel
