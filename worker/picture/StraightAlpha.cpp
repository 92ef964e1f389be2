#include "worker/picture/StraightAlpha.h"

#include <cmath>

namespace Morvane::Worker {

namespace {

// SMPTE ST 2084; 1 is the nominal peak of 10000 cd/m2.
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

// ITU-R BT.2100, HLG; 1 is the scene light that is stored as 1.
constexpr double hlgA = 0.17883277;
constexpr double hlgB = 0.28466892;
constexpr double hlgC = 0.55991073;

double hlgLinear(double stored) {
    return stored <= 0.5 ? stored * stored / 3 : (std::exp((stored - hlgC) / hlgA) + hlgB) / 12;
}

double hlgStored(double linear) {
    return linear <= 1.0 / 12 ? std::sqrt(3 * linear) : hlgA * std::log(12 * linear - hlgB) + hlgC;
}

// IEC 61966-2-1.
double srgbLinear(double stored) {
    return stored <= 0.04045 ? stored / 12.92 : std::pow((stored + 0.055) / 1.055, 2.4);
}

double srgbStored(double linear) {
    return linear <= 0.0031308 ? linear * 12.92 : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

double linearOfPositive(double stored, AVColorTransferCharacteristic transfer) {
    switch (transfer) {
        case AVCOL_TRC_LINEAR:
            return stored;
        case AVCOL_TRC_GAMMA22:
            return std::pow(stored, 2.2);
        case AVCOL_TRC_GAMMA28:
            return std::pow(stored, 2.8);
        case AVCOL_TRC_SMPTE2084:
            return pqLinear(stored);
        case AVCOL_TRC_ARIB_STD_B67:
            return hlgLinear(stored);
        default:
            return srgbLinear(stored);
    }
}

double storedOfPositive(double linear, AVColorTransferCharacteristic transfer) {
    switch (transfer) {
        case AVCOL_TRC_LINEAR:
            return linear;
        case AVCOL_TRC_GAMMA22:
            return std::pow(linear, 1 / 2.2);
        case AVCOL_TRC_GAMMA28:
            return std::pow(linear, 1 / 2.8);
        case AVCOL_TRC_SMPTE2084:
            return pqStored(linear);
        case AVCOL_TRC_ARIB_STD_B67:
            return hlgStored(linear);
        default:
            return srgbStored(linear);
    }
}

}  // namespace

double linearOf(double stored, AVColorTransferCharacteristic transfer) {
    return std::copysign(linearOfPositive(std::abs(stored), transfer), stored);
}

double storedOf(double linear, AVColorTransferCharacteristic transfer) {
    return std::copysign(storedOfPositive(std::abs(linear), transfer), linear);
}

void divideAlphaOut(const float* rgba, float* out, std::size_t width,
                    AVColorTransferCharacteristic transfer) {
    for (std::size_t i = 0; i < 4 * width; i += 4) {
        const double alpha = rgba[i + 3];
        for (std::size_t channel = i; channel < i + 3; ++channel) {
            if (alpha == 1)
                out[channel] = rgba[channel];
            else if (alpha > 0)
                out[channel] =
                    static_cast<float>(storedOf(linearOf(rgba[channel], transfer) / alpha, transfer));
            else
                out[channel] = 0;
        }
        out[i + 3] = rgba[i + 3];
    }
}

}  // namespace Morvane::Worker
