#include "worker/codec/Curve.h"

#include <cmath>

namespace Morvane::Worker {

namespace {

struct NamedCurve {
    Curve curve;
    const char* name;
};

constexpr NamedCurve curves[] = {
    {Curve::Srgb, "srgb"},        {Curve::Linear, "linear"},    {Curve::Rec709, "rec709"},
    {Curve::Gamma18, "gamma1.8"}, {Curve::Gamma22, "gamma2.2"}, {Curve::Gamma24, "gamma2.4"},
    {Curve::Gamma28, "gamma2.8"}, {Curve::Cineon, "cineon"},    {Curve::Pq, "pq"},
    {Curve::Hlg, "hlg"}};

constexpr double pqM1 = 2610.0 / 16384;
constexpr double pqM2 = 2523.0 / 4096 * 128;
constexpr double pqC1 = 3424.0 / 4096;
constexpr double pqC2 = 2413.0 / 4096 * 32;
constexpr double pqC3 = 2392.0 / 4096 * 32;

double pqLinear(double stored) {
    const double power = std::pow(stored, 1 / pqM2);
    return std::pow(std::fmax(power - pqC1, 0) / (pqC2 - pqC3 * power), 1 / pqM1);
}

double pqStored(double linear) {
    const double power = std::pow(linear, pqM1);
    return std::pow((pqC1 + pqC2 * power) / (1 + pqC3 * power), pqM2);
}

constexpr double hlgA = 0.17883277;
constexpr double hlgB = 0.28466892;
constexpr double hlgC = 0.55991073;

double hlgLinear(double stored) {
    return stored <= 0.5 ? stored * stored / 3 : (std::exp((stored - hlgC) / hlgA) + hlgB) / 12;
}

double hlgStored(double linear) {
    return linear <= 1.0 / 12 ? std::sqrt(3 * linear) : hlgA * std::log(12 * linear - hlgB) + hlgC;
}

constexpr double filmBlack = 95 / 1023.0;
constexpr double filmDecade = 300 / 1023.0;
const double filmRange = std::pow(10, (685 - 95) / 300.0) - 1;

double linearOfPositive(double stored, Curve curve) {
    switch (curve) {
        case Curve::Linear:
            return stored;
        case Curve::Rec709:
            return stored < 4.5 * 0.018 ? stored / 4.5 : std::pow((stored + 0.099) / 1.099, 1 / 0.45);
        case Curve::Gamma18:
            return std::pow(stored, 1.8);
        case Curve::Gamma22:
            return std::pow(stored, 2.2);
        case Curve::Gamma24:
            return std::pow(stored, 2.4);
        case Curve::Gamma28:
            return std::pow(stored, 2.8);
        case Curve::Cineon:
            return (std::pow(10, stored / filmDecade) - 1) / filmRange;
        case Curve::Pq:
            return pqLinear(stored);
        case Curve::Hlg:
            return hlgLinear(stored);
        case Curve::Srgb:
            break;
    }
    return stored <= 0.04045 ? stored / 12.92 : std::pow((stored + 0.055) / 1.055, 2.4);
}

double storedOfPositive(double linear, Curve curve) {
    switch (curve) {
        case Curve::Linear:
            return linear;
        case Curve::Rec709:
            return linear < 0.018 ? linear * 4.5 : 1.099 * std::pow(linear, 0.45) - 0.099;
        case Curve::Gamma18:
            return std::pow(linear, 1 / 1.8);
        case Curve::Gamma22:
            return std::pow(linear, 1 / 2.2);
        case Curve::Gamma24:
            return std::pow(linear, 1 / 2.4);
        case Curve::Gamma28:
            return std::pow(linear, 1 / 2.8);
        case Curve::Cineon:
            return filmDecade * std::log10(linear * filmRange + 1);
        case Curve::Pq:
            return pqStored(linear);
        case Curve::Hlg:
            return hlgStored(linear);
        case Curve::Srgb:
            break;
    }
    return linear <= 0.0031308 ? linear * 12.92 : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

/// The value that black is stored as.
double blackOf(Curve curve) {
    return curve == Curve::Cineon ? filmBlack : 0;
}

}  // namespace

const char* curveName(Curve curve) {
    for (const NamedCurve& named : curves)
        if (named.curve == curve)
            return named.name;
    return "";
}

std::optional<Curve> curveNamed(const std::string& name) {
    for (const NamedCurve& named : curves)
        if (name == named.name)
            return named.curve;
    return std::nullopt;
}

std::string curveNames() {
    std::string names;
    for (const NamedCurve& named : curves)
        names += (names.empty() ? "" : "|") + std::string(named.name);
    return names;
}

double linearOf(double stored, Curve curve) {
    const double rise = stored - blackOf(curve);
    return std::copysign(linearOfPositive(std::abs(rise), curve), rise);
}

double storedOf(double linear, Curve curve) {
    return blackOf(curve) + std::copysign(storedOfPositive(std::abs(linear), curve), linear);
}

}  // namespace Morvane::Worker
