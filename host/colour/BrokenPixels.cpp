#include "host/colour/BrokenPixels.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <bit>
#include <cstddef>
#include <utility>

namespace Corvel {
namespace {

// Samples as their bits. What has the whole exponent is infinite, or no number where more bits are set.
struct FloatBits {
    using Sample = float;
    using Bits = std::uint32_t;
    static constexpr Bits exponent = 0x7F80'0000U;
    static constexpr Bits sign = 0x8000'0000U;
};

struct HalfBits {
    using Sample = Picture::Code;
    using Bits = Picture::Code;
    static constexpr Bits exponent = 0x7C00U;
    static constexpr Bits sign = 0x8000U;
};

constexpr Picture::Code largestHalf = 0x7BFFU;
constexpr Picture::Code oneAsHalf = 0x3C00U;

template <class Form>
typename Form::Bits magnitudeOf(typename Form::Sample sample) {
    return static_cast<typename Form::Bits>(std::bit_cast<typename Form::Bits>(sample) & ~Form::sign);
}

// Without a branch, so that it can be vectorised: nearly every picture has none.
template <class Form>
bool hasBroken(const typename Form::Sample* samples, std::size_t count) {
    typename Form::Bits found = 0;
    for (std::size_t i = 0; i < count; ++i) {
        found |= static_cast<typename Form::Bits>(magnitudeOf<Form>(samples[i]) >= Form::exponent);
    }
    return found != 0;
}

template <class Form>
BrokenPixels::Count mendSamples(typename Form::Sample* samples, std::size_t count,
                                typename Form::Sample infinity) {
    BrokenPixels::Count found;
    if (!hasBroken<Form>(samples, count)) {
        return found;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const auto magnitude = magnitudeOf<Form>(samples[i]);
        if (magnitude > Form::exponent) {
            ++found.notNumbers;
            samples[i] = 0;
        } else if (magnitude == Form::exponent) {
            ++found.infinite;
            const bool positive = std::bit_cast<typename Form::Bits>(samples[i]) == magnitude;
            samples[i] = positive ? infinity : 0;
        }
    }
    return found;
}

std::string textOf(std::uint64_t notNumbers, std::uint64_t infinite) {
    return fmt::format(
        "{} samples that are not a number, written as 0, and {} infinite ones, written as {} or 0",
        notNumbers, infinite, BrokenPixels::largest);
}

class MendingStep : public PictureStep {
public:
    explicit MendingStep(std::shared_ptr<BrokenPixels> shared) : counter(std::move(shared)) {}

    void apply(const FrameUnderWay& frame, Picture& picture) override {
        if (!frame.header.floatingPoint) {
            return;
        }
        BrokenPixels::Count found;
        for (int channel = 0; channel < picture.channels(); ++channel) {
            for (int y = 0; y < picture.height(); ++y) {
                const BrokenPixels::Count row = mendRow(picture, channel, y);
                found.notNumbers += row.notNumbers;
                found.infinite += row.infinite;
            }
        }
        counter->add(frame.number, found);
    }

    bool takesCodes() const override { return true; }

private:
    static BrokenPixels::Count mendRow(Picture& picture, int channel, int y) {
        const bool isAlpha = channel == 3;
        return picture.table() != nullptr
                   ? BrokenPixels::mend(picture.codeRow(channel, y), picture.rowStride(),
                                        isAlpha ? oneAsHalf : largestHalf)
                   : BrokenPixels::mend(picture.row(channel, y), picture.rowStride(),
                                        isAlpha ? 1.0F : BrokenPixels::largest);
    }

    const std::shared_ptr<BrokenPixels> counter;
};

}  // namespace

BrokenPixels::Count BrokenPixels::mend(float* samples, std::size_t count, float infinity) {
    return mendSamples<FloatBits>(samples, count, infinity);
}

BrokenPixels::Count BrokenPixels::mend(Picture::Code* samples, std::size_t count, Picture::Code infinity) {
    return mendSamples<HalfBits>(samples, count, infinity);
}

void BrokenPixels::add(int frame, Count found) {
    if (found.notNumbers == 0 && found.infinite == 0) {
        return;
    }
    notNumbers += found.notNumbers;
    infinite += found.infinite;
    if (frames.fetch_add(1) == 0) {
        spdlog::warn("frame {} has {}", frame, textOf(found.notNumbers, found.infinite));
    }
}

void BrokenPixels::tellTotal() const {
    if (frames > 1) {
        spdlog::info("{} frames have {}", frames.load(), textOf(notNumbers, infinite));
    }
}

std::unique_ptr<PictureStep> makeMendingStep(std::shared_ptr<BrokenPixels> counter) {
    return std::make_unique<MendingStep>(std::move(counter));
}

}  // namespace Corvel
