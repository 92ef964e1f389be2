#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace Morvane::Writer {

/// The number cut towards zero; at the nearer end of the range when 32 bits don't hold it, 0 for NaN.
inline std::int32_t wholeNumber(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    constexpr double low = std::numeric_limits<std::int32_t>::min();
    constexpr double high = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::fmax(low, std::fmin(high, value)));
}

}  // namespace Morvane::Writer
