#pragma once

#include <vector>

#include "host/geometry/Placement.h"
#include "host/geometry/Resampling.h"

namespace Corvel {

/// Makes the rows of a scaled picture, one at a time and in linear light: rows are mixed first, then columns.
/// Keeps weights and scratch memory from one row and one picture to the next. One thread.
class RowResampler {
public:
    RowResampler(const Placement& placement, Filter filter);

    /// Writes row `y` of what is placed, `placement.down.count` of them, to `pixels`:
    /// `placement.across.count` x 4 floats, the fourth of them 0 where `from` has no alpha. REQUIRES: `from`
    /// has the size that the placement is for, and its samples are finite floats.
    void makeRow(const Picture& from, int y, float* pixels);

private:
    const Window source;
    const Resampling across;
    const Resampling down;
    std::vector<const float*> rows;  ///< those that make one row, four planes each
    std::vector<float> mixed;        ///< one row of the source's width, interleaved
};

}  // namespace Corvel
