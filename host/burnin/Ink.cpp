#include "host/burnin/Ink.h"

#include <algorithm>
#include <cstddef>

namespace Corvel {
namespace {

// The letters' part of one row: what they cover of the samples from column `left` on.
void lay(const Coverage& letters, int x, int row, int left, std::vector<float>& covered) {
    std::fill(covered.begin(), covered.end(), 0.0F);
    if (row < 0 || row >= letters.height) {
        return;
    }
    const int begin = std::max(x, left);
    const int end = std::min(x + letters.width, left + static_cast<int>(covered.size()));
    const std::uint8_t* const from = letters.samples.data() + std::ptrdiff_t{row} * letters.width;
    for (int column = begin; column < end; ++column) {
        covered[static_cast<std::size_t>(column - left)] = static_cast<float>(from[column - x]) / 255;
    }
}

void blend(float* samples, const std::vector<float>& covered, float below, float opacityBelow, float above,
           float opacityAbove) {
    for (std::size_t i = 0; i < covered.size(); ++i) {
        const float under = samples[i] * (1 - opacityBelow) + below * opacityBelow;
        const float share = covered[i] * opacityAbove;
        samples[i] = under * (1 - share) + above * share;
    }
}

}  // namespace

void paint(Picture& picture, const DisplayValues& values, const Window& rectangle, const Ink& ink,
           const Coverage& letters, int x, int y, const Ink& letterInk) {
    const Window seen = overlapOf(rectangle, {0, 0, picture.width(), picture.height()});
    std::vector<float> covered(static_cast<std::size_t>(seen.width));
    for (int row = seen.y; row < seen.y + seen.height; ++row) {
        lay(letters, x, row - y, seen.x, covered);
        for (int channel = 0; channel < picture.channels(); ++channel) {
            float* const samples = picture.row(channel, row) + seen.x;
            if (channel == 3) {
                blend(samples, covered, 1, ink.opacity, 1, letterInk.opacity);
                continue;
            }
            if (values.curve != nullptr) {
                values.curve->toStored(samples, samples, covered.size(), 1);
            }
            std::transform(samples, samples + covered.size(), samples,
                           [&](float sample) { return std::clamp(sample, 0.0F, values.white); });
            const std::size_t colour = static_cast<std::size_t>(channel);
            blend(samples, covered, ink.colour[colour] * values.white, ink.opacity,
                  letterInk.colour[colour] * values.white, letterInk.opacity);
            if (values.curve != nullptr) {
                values.curve->toLinear(samples, samples, covered.size(), 1);
            }
        }
    }
}

void paint(Picture& picture, const DisplayValues& values, const Window& rectangle, const Ink& ink) {
    paint(picture, values, rectangle, ink, {}, 0, 0, {});
}

}  // namespace Corvel
