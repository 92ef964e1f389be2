#include "Kex/Image/LUT.h"

#include <array>
#include <cmath>

#include "Kex/Image/CurveKernels.h"

namespace Kex::Image {

namespace {

class LinearLut final : public LUT {
public:
    LinearLut() : LUT(0, "linear") {}

    double toStored(double linear) const override { return linear; }
    double toLinear(double stored) const override { return stored; }

    void toStored(float* to, const float* from, std::size_t count, std::size_t stride) const override {
        copyRun({to, from, count, stride});
    }

    void toLinear(float* to, const float* from, std::size_t count, std::size_t stride) const override {
        copyRun({to, from, count, stride});
    }
};

/// A straight line near black and a power above it.
class PowerLut final : public LUT {
public:
    struct Curve {
        double lineEnd;  ///< linear light as far as which the line holds
        double slope;
        double scale;
        double exponent;
        double offset;
    };

    PowerLut(int number, const char* text, const Curve& c)
        : LUT(number, text),
          forward{c.lineEnd, c.slope, 1, 0, c.exponent, c.scale, -c.offset},
          inverse{c.lineEnd * c.slope, 1 / c.slope, 1 / c.scale, c.offset / c.scale, 1 / c.exponent, 1, 0} {}

    double toStored(double linear) const override { return value(forward, linear); }
    double toLinear(double stored) const override { return value(inverse, stored); }

    void toStored(float* to, const float* from, std::size_t count, std::size_t stride) const override {
        applyPower(forward, {to, from, count, stride});
    }

    void toLinear(float* to, const float* from, std::size_t count, std::size_t stride) const override {
        applyPower(inverse, {to, from, count, stride});
    }

private:
    static double value(const PowerFormula& formula, double x) {
        const double magnitude = std::fabs(x);
        const double y =
            magnitude <= formula.lineEnd
                ? formula.slope * magnitude
                : formula.scale * std::pow(formula.gain * magnitude + formula.lift, formula.exponent) +
                      formula.offset;
        return std::copysign(y, x);
    }

    PowerFormula forward;
    PowerFormula inverse;
};

/// Printing density of film, 10 bits: white at code 685, black at 95, 0.002 density a code, negative gamma
/// 0.6, that is, 300 codes for each factor of ten.
class FilmLut final : public LUT {
public:
    FilmLut() : LUT(5, "cineon") {}

    double toStored(double linear) const override {
        const double rise = formula.density * std::log2(formula.gain * std::fabs(linear) + 1);
        return formula.black + std::copysign(rise, linear);
    }

    double toLinear(double stored) const override {
        const double rise = stored - formula.black;
        return std::copysign((std::exp2(std::fabs(rise) / formula.density) - 1) / formula.gain, rise);
    }

    void toStored(float* to, const float* from, std::size_t count, std::size_t stride) const override {
        applyLog(formula, {to, from, count, stride});
    }

    void toLinear(float* to, const float* from, std::size_t count, std::size_t stride) const override {
        applyInverseLog(formula, {to, from, count, stride});
    }

private:
    const LogFormula formula{95 / 1023.0, 300 * std::log10(2.0) / 1023, std::pow(10, (685 - 95) / 300.0) - 1};
};

const std::array<const LUT*, LUT::count>& table() {
    static const LinearLut linear;
    static const PowerLut rec709(1, "rec709", {0.018, 4.5, 1.099, 0.45, 0.099});
    static const PowerLut gamma18(2, "gamma1.8", {0, 1, 1, 1 / 1.8, 0});
    static const PowerLut gamma22(3, "gamma2.2", {0, 1, 1, 1 / 2.2, 0});
    static const PowerLut gamma24(4, "gamma2.4", {0, 1, 1, 1 / 2.4, 0});
    static const FilmLut cineon;
    static const PowerLut srgb(6, "srgb", {0.0031308, 12.92, 1.055, 1 / 2.4, 0.055});
    static const std::array<const LUT*, LUT::count> all = {&linear,  &rec709, &gamma18, &gamma22,
                                                           &gamma24, &cineon, &srgb};
    return all;
}

}  // namespace

const LUT* LUT::getLut(int type) {
    const auto& all = table();
    return type >= 0 && static_cast<std::size_t>(type) < all.size() ? all[static_cast<std::size_t>(type)]
                                                                    : nullptr;
}

const LUT* LUT::find(const std::string& name) {
    for (const LUT* const curve : table()) {
        if (name == curve->name()) {
            return curve;
        }
    }
    return nullptr;
}

}  // namespace Kex::Image
