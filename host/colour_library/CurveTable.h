#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "host/colour_library/RowKernels.h"

namespace Corvel {

/// A function of each colour by itself as tables, one a colour: what a chain of logarithms, powers and clamps
/// does, in a small part of the time that each of them takes by itself.
class CurveTable {
public:
    /// Puts `count` RGBA pixels in place through the function that is to be tabled.
    using Function = std::function<void(float* pixels, std::size_t count)>;

    /// Tables of the function; nothing where no table of a bearable size keeps between its entries within a
    /// quarter of a 16-bit code value of it, relative above 1.
    static std::optional<CurveTable> of(const Function& function);

    /// Changes `count` pixels in place, three rows of floats.
    void apply(float* red, float* green, float* blue, std::size_t count) const;

private:
    explicit CurveTable(const CellDivision& wanted) : division(wanted) {}

    CurveCells cells(int colour) const;
    void fill(const Function& function);
    bool isClose(const Function& function) const;

    CellDivision division;
    std::vector<CurveCell> curves[3];  // of positive magnitudes, then of negative ones
    bool alike = false;                // the three are the same
};

}  // namespace Corvel
