#pragma once

#include <vector>

#include "host/geometry/RowResampler.h"

namespace Corvel {

/// Scales pictures and puts them where they belong, in linear light. Keeps weights and scratch memory from
/// one picture to the next. One thread. The image library's own scaling takes more than a hundred times as
/// long.
class Resampler {
public:
    Resampler(const Placement& placement, Filter filter);

    /// Makes `to`, a picture of the placement's size with the channels of `from`; 0 where nothing is placed.
    /// REQUIRES: `from` has the size that the placement is for, and its samples are finite.
    void place(const Picture& from, Picture& to);

private:
    void copyRow(const Picture& from, Picture& to, int y) const;
    void scaleRow(const Picture& from, Picture& to, int y);

    const Placement placement;
    RowResampler rows;
    std::vector<float> scaled;  ///< one row as it is placed, interleaved
};

}  // namespace Corvel
