#pragma once

#include <cstddef>
#include <cstdint>

namespace Morvane::Worker {

/// How a movie's pictures are to be turned for showing: quarter turns and mirrorings, which is all that
/// cameras use.
struct Orientation {
    bool transposed = false;  ///< rows become columns first
    bool mirrored = false;    ///< then left and right change places
    bool flipped = false;     ///< and top and bottom

    /// Of a QuickTime display matrix (nine numbers, row by row, 16.16 fixed point but for the third column),
    /// which maps stored to shown positions. Other angles than quarter turns are not turned.
    static Orientation ofMatrix(const std::int32_t* matrix);

    std::size_t shownWidth(std::size_t width, std::size_t height) const {
        return transposed ? height : width;
    }
    std::size_t shownHeight(std::size_t width, std::size_t height) const {
        return transposed ? width : height;
    }

    /// Where the stored picture's row `row` goes in the shown picture, in pixels: of its first pixel, and
    /// from one pixel to the next.
    struct Path {
        std::ptrdiff_t start;
        std::ptrdiff_t step;
    };
    Path pathOfRow(std::size_t row, std::size_t width, std::size_t height) const;
};

}  // namespace Morvane::Worker
