#pragma once

#include <array>
#include <vector>

#include "Kex/Image/Channel.h"
#include "Kex/Image/CodeTable.h"
#include "Kex/Image/Export.h"

namespace Kex::Image {

/// One row of a picture between two columns, one run of floats a channel.
///
/// A reader makes one Row and has it filled again and again. Whoever fills it either writes into the row's
/// own storage (`writable`, allocated once and kept) or lets the row refer to samples that it keeps itself
/// (`refer`), so that fetching a row of a decoded frame copies nothing. One thread at a time.
class KEX_IMAGE_API Row {
public:
    /// The data of one channel, in whichever way the row has them; for Writer::to_float, which need not
    /// calculate for each sample what it can look up. Valid as long as the floats are.
    class Samples {
    public:
        /// The codes, and what they mean; both null where the row has floats.
        const CodeTable::Code* codes() const { return row->codes[channel]; }
        const CodeTable* table() const { return row->tables[channel]; }
        /// The floats, in any case.
        const float* floats() const { return (*row)[channel]; }

    private:
        friend class Row;
        Samples(const Row& row, Channel channel) : row(&row), channel(channel) {}

        const Row* row;
        Channel channel;
    };

    /// A row for the columns x (inclusive) to r (exclusive), r >= x. All channels read as 0 until they are
    /// filled.
    Row(int x, int r);

    int x() const { return left; }
    int r() const { return right; }
    int width() const { return right - left; }

    /// The samples of channel `z`: `width()` floats, the first one at column `x()`. Valid until the row is
    /// filled again or destroyed, and, for samples that the row only refers to, no longer than their owner
    /// keeps them. Where the row refers to codes, they are looked up when this is first asked for.
    const float* operator[](Channel z) const { return floats[z] != nullptr ? floats[z] : lookedUp(z); }

    /// The same samples, without looking them up.
    Samples samples(Channel z) const { return {*this, z}; }

    /// Storage of the row's own for channel `z`, `width()` floats with arbitrary contents, to be written by
    /// the caller. Not for `Chan_Black`.
    float* writable(Channel z);

    /// Makes channel `z` read the caller's `width()` floats, which must stay valid and unchanged until the
    /// reader is done with the row. Not for `Chan_Black`.
    void refer(Channel z, const float* planarSamples);

    /// The same for `width()` codes, all of them in `table`.
    void refer(Channel z, const CodeTable::Code* planarCodes, const CodeTable& table);

    /// Sets every sample of channel `z` to `value`.
    void fill(Channel z, float value);

private:
    const float* lookedUp(Channel z) const;

    int left;
    int right;
    mutable std::array<std::vector<float>, channelCount + 1> storage;
    mutable std::array<const float*, channelCount + 1> floats{};  ///< null where there are only codes as yet
    std::array<const CodeTable::Code*, channelCount + 1> codes{};
    std::array<const CodeTable*, channelCount + 1> tables{};
};

}  // namespace Kex::Image
