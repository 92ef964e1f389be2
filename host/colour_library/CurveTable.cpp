#include "host/colour_library/CurveTable.h"

#include <algorithm>
#include <cmath>

namespace Corvel {
namespace {

// The places of all entries of one sign, and what lies `part` of a cell further.
std::vector<float> places(const CellDivision& division, double part) {
    std::vector<float> found;
    const int cells = 1 << division.mantissaBits;
    for (int exponent = division.lowest; exponent < division.highest; ++exponent) {
        for (int cell = 0; cell < cells; ++cell) {
            found.push_back(static_cast<float>(std::ldexp(1 + (cell + part) / cells, exponent)));
        }
    }
    found.push_back(static_cast<float>(std::ldexp(1.0, division.highest)));
    return found;
}

// The function's values at those places and then at their mirror images, as RGBA pixels.
std::vector<float> valuesAt(const std::vector<float>& at, const CurveTable::Function& function) {
    std::vector<float> pixels;
    for (const float sign : {1.0F, -1.0F}) {
        for (const float x : at) {
            pixels.insert(pixels.end(), {sign * x, sign * x, sign * x, 1.0F});
        }
    }
    function(pixels.data(), pixels.size() / 4);
    return pixels;
}

float finite(float value) {
    return std::isfinite(value) ? value : std::isnan(value) ? 0.0F : std::copysign(1e30F, value);
}

}  // namespace

std::optional<CurveTable> CurveTable::of(const Function& function) {
    // Light wants many powers of two, encoded values fine steps below 1.
    for (const CellDivision& division : {CellDivision{8, -48, 17}, {10, -48, 17}, {12, -16, 6}}) {
        CurveTable table(division);
        table.fill(function);
        if (table.isClose(function)) {
            return table;
        }
    }
    return std::nullopt;
}

void CurveTable::fill(const Function& function) {
    const std::vector<float> pixels = valuesAt(places(division, 0), function);
    for (std::size_t colour = 0; colour < 3; ++colour) {
        std::vector<CurveCell>& curve = curves[colour];
        curve.resize(pixels.size() / 4);
        for (std::size_t i = 0; i < curve.size(); ++i) {
            curve[i].value = finite(pixels[4 * i + colour]);
        }
        // The last place of each sign is the end of its last cell, in which nothing is looked up.
        for (std::size_t i = 0; i + 1 < curve.size(); ++i) {
            curve[i].rise = curve[i + 1].value - curve[i].value;
        }
    }
    const auto isSame = [this](const std::vector<CurveCell>& other) {
        return std::equal(other.begin(), other.end(), curves[0].begin(),
                          [](const CurveCell& a, const CurveCell& b) { return a.value == b.value; });
    };
    alike = isSame(curves[1]) && isSame(curves[2]);
}

bool CurveTable::isClose(const Function& function) const {
    constexpr double tolerance = 0.25 / 65535;
    for (const double part : {0.25, 0.5}) {
        const std::vector<float> at = places(division, part);
        const std::vector<float> exact = valuesAt(at, function);
        std::vector<float> own(2 * at.size());
        for (int colour = 0; colour < 3; ++colour) {
            std::copy(at.begin(), at.end(), own.begin());
            std::transform(at.begin(), at.end(), own.begin() + static_cast<std::ptrdiff_t>(at.size()),
                           [](float x) { return -x; });
            applyCurve(cells(colour), own.data(), own.size());
            for (std::size_t i = 0; i < own.size(); ++i) {
                const double wanted = exact[4 * i + static_cast<std::size_t>(colour)];
                if (std::isfinite(wanted) && std::abs(wanted) < 65504 &&
                    std::abs(own[i] - wanted) > tolerance * std::max(1.0, std::abs(wanted))) {
                    return false;
                }
            }
        }
    }
    return true;
}

CurveCells CurveTable::cells(int colour) const {
    const std::vector<CurveCell>& all = curves[static_cast<std::size_t>(colour)];
    return {division, all.data(), all.data() + all.size() / 2};
}

void CurveTable::apply(float* red, float* green, float* blue, std::size_t count) const {
    applyCurve(cells(0), red, count);
    applyCurve(cells(alike ? 0 : 1), green, count);
    applyCurve(cells(alike ? 0 : 2), blue, count);
}

}  // namespace Corvel
