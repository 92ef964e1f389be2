#include "host/geometry/RowResampler.h"

#include <cstddef>

#include "host/geometry/MixKernels.h"

namespace Corvel {

RowResampler::RowResampler(const Placement& placement, Filter filter)
    : source(placement.source),
      across(placement.across, source.width, filter),
      down(placement.down, source.height, filter),
      rows(static_cast<std::size_t>(down.taps()) * 4),
      mixed(static_cast<std::size_t>(source.width) * 4) {}

void RowResampler::makeRow(const Picture& from, int y, float* pixels) {
    const std::size_t output = static_cast<std::size_t>(y);
    const int first = source.y + down.firsts()[output];
    auto entry = rows.begin();
    for (int tap = 0; tap < down.taps(); ++tap) {
        for (int channel = 0; channel < 4; ++channel) {
            const bool there = channel < from.channels();
            *entry++ = there ? from.row(channel, first + tap) + source.x : nullptr;
        }
    }
    const float* const weights = down.weights().data() + output * static_cast<std::size_t>(down.taps());
    mixRows(rows.data(), weights, down.taps(), down.held(), static_cast<std::size_t>(source.width),
            mixed.data());
    mixPixels(mixed.data(), across.firsts().data(), across.weights().data(), across.taps(), across.held(),
              across.firsts().size(), pixels);
}

}  // namespace Corvel
