#pragma once

#include <cstddef>
#include <vector>

namespace Corvel {

/// The weights that scale a line of samples to another length: linear interpolation where it gets longer, a
/// tent over all samples that an output covers where it gets shorter. No weight is negative, so that in
/// linear light no dark rims appear around highlights. Samples beyond the ends count as not there.
class TentFilter {
public:
    /// From `from` samples to `to`; both at least 1.
    TentFilter(int from, int to);

    /// How many samples make one output; the same number for all of them.
    int count() const { return taps; }
    /// The first of the samples that make `output`. All `count` of them are there.
    int first(int output) const { return firsts[static_cast<std::size_t>(output)]; }
    /// Their weights, which add up to 1.
    const float* weights(int output) const {
        return values.data() + static_cast<std::size_t>(output) * static_cast<std::size_t>(taps);
    }

private:
    int taps;
    std::vector<int> firsts;
    std::vector<float> values;
};

}  // namespace Corvel
