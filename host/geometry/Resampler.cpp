#include "host/geometry/Resampler.h"

#include <algorithm>
#include <cstddef>

#include "host/geometry/MixKernels.h"
#include "host/images/SplitKernels.h"

namespace Corvel {

Resampler::Resampler(const Placement& placement, Filter filter)
    : placement(placement),
      across(placement.across, placement.source.width, filter),
      down(placement.down, placement.source.height, filter),
      rows(static_cast<std::size_t>(down.taps()) * 4),
      mixed(static_cast<std::size_t>(placement.source.width) * 4),
      scaled(static_cast<std::size_t>(placement.across.count) * 4) {}

void Resampler::copyRow(const Picture& from, Picture& to, int y) const {
    const int column = placement.source.x + static_cast<int>(placement.across.first);
    const int row = placement.source.y + static_cast<int>(placement.down.first) + y;
    for (int channel = 0; channel < to.channels(); ++channel) {
        std::copy_n(from.row(channel, row) + column, placement.across.count,
                    to.row(channel, placement.down.begin + y) + placement.across.begin);
    }
}

void Resampler::mixRow(const Picture& from, Picture& to, int y) {
    const std::size_t output = static_cast<std::size_t>(y);
    const int first = placement.source.y + down.firsts()[output];
    auto entry = rows.begin();
    for (int tap = 0; tap < down.taps(); ++tap) {
        for (int channel = 0; channel < 4; ++channel) {
            const bool there = channel < from.channels();
            *entry++ = there ? from.row(channel, first + tap) + placement.source.x : nullptr;
        }
    }
    const float* const weights = down.weights().data() + output * static_cast<std::size_t>(down.taps());
    mixRows(rows.data(), weights, down.taps(), down.held(), static_cast<std::size_t>(placement.source.width),
            mixed.data());
    const std::size_t count = static_cast<std::size_t>(placement.across.count);
    mixPixels(mixed.data(), across.firsts().data(), across.weights().data(), across.taps(), across.held(),
              count, scaled.data());
    float* planes[4] = {};
    for (int channel = 0; channel < to.channels(); ++channel) {
        planes[channel] = to.row(channel, placement.down.begin + y) + placement.across.begin;
    }
    splitPixels(scaled.data(), 4, count, planes);
}

void Resampler::place(const Picture& from, Picture& to) {
    to.reset(placement.width, placement.height, from.channels());
    const Span& columns = placement.across;
    if (columns.count != placement.width || placement.down.count != placement.height) {
        to.clear();
    }
    const bool copied = columns.isCopy() && placement.down.isCopy();
    for (int y = 0; y < placement.down.count && columns.count > 0; ++y) {
        copied ? copyRow(from, to, y) : mixRow(from, to, y);
    }
}

}  // namespace Corvel
