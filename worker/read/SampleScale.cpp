#include "worker/read/SampleScale.h"

#include <cstddef>
#include <cstring>

#include "worker/read/FloatKernels.h"

namespace Morvane::Worker {

SampleScale SampleScale::ofBits(int bits, bool fullRange) {
    if (fullRange || bits < 8)
        return {0, static_cast<float>((std::uint64_t{1} << bits) - 1)};
    const auto unit = static_cast<float>(std::uint64_t{1} << (bits - 8));
    return {16 * unit, 219 * unit};
}

void SampleScale::apply(const void* samples, std::size_t sampleBytes, std::size_t count, float* row) const {
    switch (sampleBytes) {
        case 1:
            return FloatKernels::scale(static_cast<const std::uint8_t*>(samples), count, black, range, row);
        case 2:
            return FloatKernels::scale(static_cast<const std::uint16_t*>(samples), count, black, range, row);
        default:
            std::memcpy(row, samples, count * sizeof(float));
    }
}

}  // namespace Morvane::Worker
