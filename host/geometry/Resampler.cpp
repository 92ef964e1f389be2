#include "host/geometry/Resampler.h"

#include <algorithm>
#include <cstddef>

#include "host/images/SplitKernels.h"

namespace Corvel {

Resampler::Resampler(const Placement& placement, Filter filter)
    : placement(placement),
      rows(placement, filter),
      scaled(static_cast<std::size_t>(placement.across.count) * 4) {}

void Resampler::copyRow(const Picture& from, Picture& to, int y) const {
    const int column = placement.source.x + static_cast<int>(placement.across.first);
    const int row = placement.source.y + static_cast<int>(placement.down.first) + y;
    for (int channel = 0; channel < to.channels(); ++channel) {
        std::copy_n(from.row(channel, row) + column, placement.across.count,
                    to.row(channel, placement.down.begin + y) + placement.across.begin);
    }
}

void Resampler::scaleRow(const Picture& from, Picture& to, int y) {
    rows.makeRow(from, y, scaled.data());
    float* planes[4] = {};
    for (int channel = 0; channel < to.channels(); ++channel) {
        planes[channel] = to.row(channel, placement.down.begin + y) + placement.across.begin;
    }
    splitPixels(scaled.data(), 4, static_cast<std::size_t>(placement.across.count), planes);
}

void Resampler::place(const Picture& from, Picture& to) {
    to.reset(placement.width, placement.height, from.channels());
    const Span& columns = placement.across;
    if (columns.count != placement.width || placement.down.count != placement.height) {
        to.clear();
    }
    const bool copied = placement.isCopy();
    for (int y = 0; y < placement.down.count && columns.count > 0; ++y) {
        copied ? copyRow(from, to, y) : scaleRow(from, to, y);
    }
}

}  // namespace Corvel
