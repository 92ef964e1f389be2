#include "worker/read/SampleScale.h"

#include <cstddef>
#include <cstring>

namespace Morvane::Worker {

namespace {

/// A division and not a product with the reciprocal, so that white is exactly 1.
template <typename Sample>
void scale(const Sample* samples, std::size_t count, float black, float range, float* row) {
    for (std::size_t x = 0; x < count; ++x)
        row[x] = (static_cast<float>(samples[x]) - black) / range;
}

}  // namespace

SampleScale SampleScale::ofBits(int bits, bool fullRange) {
    if (fullRange || bits < 8)
        return {0, static_cast<float>((std::uint64_t{1} << bits) - 1)};
    const auto unit = static_cast<float>(std::uint64_t{1} << (bits - 8));
    return {16 * unit, 219 * unit};
}

void SampleScale::apply(const void* samples, std::size_t sampleBytes, std::size_t count, float* row) const {
    switch (sampleBytes) {
        case 1:
            return scale(static_cast<const std::uint8_t*>(samples), count, black, range, row);
        case 2:
            return scale(static_cast<const std::uint16_t*>(samples), count, black, range, row);
        default:
            std::memcpy(row, samples, count * sizeof(float));
    }
}

}  // namespace Morvane::Worker
