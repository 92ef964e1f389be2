#include "Kex/Image/LUT.h"

#include <array>
#include <cmath>

namespace Kex::Image {

namespace {

/// What the scalar and the array form of every curve share: the mirror image of negative values.
template <typename Formula>
double mirrored(double value, double black, Formula formula) {
    return value < 0 ? 2 * black - formula(-value) : formula(value);
}

class LinearLut final : public LUT {
public:
    LinearLut() : LUT(0, "linear") {}

    double toStored(double linear) const override { return linear; }
    double toLinear(double stored) const override { return stored; }

    void toStored(float* to, const float* from, std::size_t count, std::size_t stride) const override {
        for (std::size_t i = 0; i < count; ++i) {
            to[i * stride] = from[i];
        }
    }

    void toLinear(float* to, const float* from, std::size_t count, std::size_t stride) const override {
        toStored(to, from, count, stride);
    }
};

/// A straight line near black and a power above it.
class PowerLut final : public LUT {
public:
    struct Curve {
        double lineEnd;  ///< linear light below which the line holds
        double slope;
        double scale;
        double exponent;
        double offset;
    };

    PowerLut(int number, const char* text, const Curve& formula) : LUT(number, text), curve(formula) {}

    double toStored(double linear) const override {
        return mirrored(linear, 0, [&](double x) {
            return x <= curve.lineEnd ? curve.slope * x
                                      : curve.scale * std::pow(x, curve.exponent) - curve.offset;
        });
    }

    double toLinear(double stored) const override {
        return mirrored(stored, 0, [&](double v) {
            return v <= curve.slope * curve.lineEnd
                       ? v / curve.slope
                       : std::pow((v + curve.offset) / curve.scale, 1 / curve.exponent);
        });
    }

    void toStored(float* to, const float* from, std::size_t count, std::size_t stride) const override {
        for (std::size_t i = 0; i < count; ++i) {
            to[i * stride] = static_cast<float>(toStored(static_cast<double>(from[i])));
        }
    }

    void toLinear(float* to, const float* from, std::size_t count, std::size_t stride) const override {
        for (std::size_t i = 0; i < count; ++i) {
            to[i * stride] = static_cast<float>(toLinear(static_cast<double>(from[i])));
        }
    }

private:
    Curve curve;
};

/// Printing density of film, 10 bits: white at code 685, black at 95, 0.002 density a code, negative gamma
/// 0.6.
class FilmLut final : public LUT {
public:
    FilmLut() : LUT(5, "cineon") {}

    double toStored(double linear) const override {
        return mirrored(linear, blackStored,
                        [&](double x) { return (685 + 300 * std::log10(x * (1 - base) + base)) / 1023; });
    }

    double toLinear(double stored) const override {
        const double v = stored < blackStored ? 2 * blackStored - stored : stored;
        const double x = (std::pow(10, (1023 * v - 685) / 300) - base) / (1 - base);
        return stored < blackStored ? -x : x;
    }

    void toStored(float* to, const float* from, std::size_t count, std::size_t stride) const override {
        for (std::size_t i = 0; i < count; ++i) {
            to[i * stride] = static_cast<float>(toStored(static_cast<double>(from[i])));
        }
    }

    void toLinear(float* to, const float* from, std::size_t count, std::size_t stride) const override {
        for (std::size_t i = 0; i < count; ++i) {
            to[i * stride] = static_cast<float>(toLinear(static_cast<double>(from[i])));
        }
    }

private:
    const double base = std::pow(10, (95 - 685) / 300.0);
    const double blackStored = 95 / 1023.0;
};

const std::array<const LUT*, 7>& table() {
    static const LinearLut linear;
    static const PowerLut rec709(1, "rec709", {0.018, 4.5, 1.099, 0.45, 0.099});
    static const PowerLut gamma18(2, "gamma1.8", {0, 1, 1, 1 / 1.8, 0});
    static const PowerLut gamma22(3, "gamma2.2", {0, 1, 1, 1 / 2.2, 0});
    static const PowerLut gamma24(4, "gamma2.4", {0, 1, 1, 1 / 2.4, 0});
    static const FilmLut cineon;
    static const PowerLut srgb(6, "srgb", {0.0031308, 12.92, 1.055, 1 / 2.4, 0.055});
    static const std::array<const LUT*, 7> all = {&linear,  &rec709, &gamma18, &gamma22,
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
