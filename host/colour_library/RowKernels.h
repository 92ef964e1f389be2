#pragma once

#include <cstddef>

namespace Corvel {

/// Three colours to three others: row i of `cells` gives colour i.
struct ColourMatrix {
    float cells[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    float offsets[3] = {0, 0, 0};
};

/// Changes `count` pixels in place, three rows of floats.
void applyMatrix(const ColourMatrix& matrix, float* red, float* green, float* blue, std::size_t count);

/// How magnitudes are divided into cells, which is how floats are: `1 << mantissaBits` equal cells between
/// each power of two and the next, from 2^lowest to 2^highest.
struct CellDivision {
    int mantissaBits = 0;
    int lowest = 0;
    int highest = 0;
};

/// A function of one variable over one cell, in which it is a straight line. What is looked up together lies
/// together: the look-ups are nearly all of the time.
struct CurveCell {
    float value = 0;  ///< at the cell's lower end
    float rise = 0;   ///< from there to its upper end
};

/// The whole function.
struct CurveCells {
    CellDivision division;
    const CurveCell* positive = nullptr;  ///< in the order of magnitudes
    const CurveCell* negative = nullptr;  ///< the same for negative ones; behind the others
};

/// Puts each of `count` samples through the function. Magnitudes outside of the cells count as the nearest
/// end.
void applyCurve(const CurveCells& curve, float* samples, std::size_t count);

/// Rows to RGBA pixels with alpha 1, and back without it.
void packPixels(const float* red, const float* green, const float* blue, std::size_t count, float* pixels);
void unpackPixels(const float* pixels, std::size_t count, float* red, float* green, float* blue);

}  // namespace Corvel
