#pragma once

#include <array>
#include <vector>

#include "Kex/Image/Channel.h"
#include "Kex/Image/Export.h"

namespace Kex::Image {

/// One row of a picture between two columns, one run of floats a channel.
///
/// A reader makes one Row and has it filled again and again. Whoever fills it either writes into the row's
/// own storage (`writable`, allocated once and kept) or lets the row refer to samples that it keeps itself
/// (`refer`), so that fetching a row of a decoded frame copies nothing.
class KEX_IMAGE_API Row {
public:
    /// A row for the columns x (inclusive) to r (exclusive), r >= x. All channels read as 0 until they are
    /// filled.
    Row(int x, int r);

    int x() const { return left; }
    int r() const { return right; }
    int width() const { return right - left; }

    /// The samples of channel `z`: `width()` floats, the first one at column `x()`. Valid until the row is
    /// filled again or destroyed, and, for samples that the row only refers to, no longer than their owner
    /// keeps them.
    const float* operator[](Channel z) const { return samples[z]; }

    /// Storage of the row's own for channel `z`, `width()` floats with arbitrary contents, to be written by
    /// the caller. Not for `Chan_Black`.
    float* writable(Channel z);

    /// Makes channel `z` read the caller's `width()` floats, which must stay valid and unchanged until the
    /// reader is done with the row. Not for `Chan_Black`.
    void refer(Channel z, const float* planarSamples);

    /// Sets every sample of channel `z` to `value`.
    void fill(Channel z, float value);

private:
    int left;
    int right;
    std::array<std::vector<float>, channelCount + 1> storage;
    std::array<const float*, channelCount + 1> samples{};
};

}  // namespace Kex::Image
