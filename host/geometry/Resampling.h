#pragma once

#include <vector>

#include "host/geometry/GeometryRequest.h"
#include "host/geometry/Placement.h"

namespace Corvel {

/// The weights that make a line of samples out of another one. Where the line gets shorter, every filter is
/// as much wider, so that all samples have their part. Samples beyond the ends count as not there: the
/// weights of those that are add up to 1.
///
/// | filter      | what a sample of the output is                             | reach, samples |
/// |-------------|------------------------------------------------------------|----------------|
/// | nearest     | the sample whose place it takes                            | 0.5            |
/// | box         | the mean of what it covers                                 | 0.5            |
/// | triangle    | linear interpolation                                       | 1              |
/// | mitchell    | cubic with B = C = 1/3 (Mitchell and Netravali, 1988)      | 2              |
/// | catmull-rom | cubic through the samples, B = 0 and C = 1/2               | 2              |
/// | lanczos     | sinc within a sinc of three lobes                          | 3              |
///
/// The last three have negative weights, see `held`.
class Resampling {
public:
    /// For the samples of `span` out of `available` samples, at least 1.
    Resampling(const Span& span, int available, Filter filter);

    /// How many samples make one output; the same number for all of them.
    int taps() const { return taps_; }
    /// Where each output's samples begin; all `taps()` of them are there.
    const std::vector<int>& firsts() const { return firsts_; }
    /// Their weights, `taps()` for each output.
    const std::vector<float>& weights() const { return weights_; }
    /// Whether results are kept between the darkest and the brightest of the samples that they are made of:
    /// in linear light a negative weight beside a highlight would else draw a black rim around it. Nothing
    /// can become infinite then either.
    bool held() const { return held_; }

private:
    int taps_ = 1;
    bool held_ = false;
    std::vector<int> firsts_;
    std::vector<float> weights_;
};

}  // namespace Corvel
