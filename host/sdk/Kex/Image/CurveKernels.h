#pragma once

#include <cstddef>

namespace Kex::Image {

/// Samples to convert: `count` floats in a row are read, the results written `stride` floats apart (at least
/// 1).
struct FloatRun {
    float* to;
    const float* from;
    std::size_t count;
    std::size_t stride;
};

/// For x >= 0: slope x as far as lineEnd, above it scale (gain x + lift)^exponent + offset. The exponent is
/// above 0 and at most 3.
struct PowerFormula {
    double lineEnd;
    double slope;
    double gain;
    double lift;
    double exponent;
    double scale;
    double offset;
};

/// For x >= 0: black + density log2(gain x + 1).
struct LogFormula {
    double black;
    double density;
    double gain;
};

// The array forms of the curves in LUT.h, vectorised; the widest instructions that the processor has are
// chosen when the program runs. Negative values follow the mirror image through (0, f(0)); NaN and infinities
// pass. Errors stay below 1e-6, relative above 1. Floats between the strided ones may be read and written
// back unchanged.

void copyRun(const FloatRun& run);
void applyPower(const PowerFormula& formula, const FloatRun& run);
void applyLog(const LogFormula& formula, const FloatRun& run);
/// The inverse of applyLog.
void applyInverseLog(const LogFormula& formula, const FloatRun& run);

}  // namespace Kex::Image
