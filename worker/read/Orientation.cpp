#include "worker/read/Orientation.h"

#include <cstdlib>

namespace Morvane::Worker {

// x' = m[0] x + m[3] y, y' = m[1] x + m[4] y.
Orientation Orientation::ofMatrix(const std::int32_t* matrix) {
    const bool isQuarterTurn = matrix[0] == 0 && matrix[4] == 0 && matrix[1] != 0 && matrix[3] != 0;
    if (isQuarterTurn)
        return {true, matrix[3] < 0, matrix[1] < 0};
    const bool isUpright = matrix[1] == 0 && matrix[3] == 0;
    return isUpright ? Orientation{false, matrix[0] < 0, matrix[4] < 0} : Orientation{};
}

Orientation::Path Orientation::pathOfRow(std::size_t row, std::size_t width, std::size_t height) const {
    const auto shown = static_cast<std::ptrdiff_t>(shownWidth(width, height));
    const auto lines = static_cast<std::ptrdiff_t>(shownHeight(width, height));
    const auto y = static_cast<std::ptrdiff_t>(row);
    // Along a stored row either x or y of the shown picture runs, the other is fixed.
    std::ptrdiff_t startX = transposed ? y : 0;
    std::ptrdiff_t startY = transposed ? 0 : y;
    if (mirrored)
        startX = shown - 1 - startX;
    if (flipped)
        startY = lines - 1 - startY;
    const std::ptrdiff_t step = transposed ? (flipped ? -shown : shown) : (mirrored ? -1 : 1);
    return {startY * shown + startX, step};
}

}  // namespace Morvane::Worker
