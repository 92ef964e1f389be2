#include "host/colour/BrokenPixels.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <cmath>
#include <cstring>
#include <utility>

namespace Corvel {
namespace {

constexpr std::uint32_t exponentBits = 0x7F80'0000U;

// Whether a sample has the exponent of what is no number or infinite. Without a branch, so that it can be
// vectorised: nearly every picture has none.
bool hasBroken(const float* samples, std::size_t count) {
    std::uint32_t found = 0;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t bits = 0;
        std::memcpy(&bits, samples + i, sizeof bits);
        found |= static_cast<std::uint32_t>((bits & exponentBits) == exponentBits);
    }
    return found != 0;
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
            const float infinity = channel == 3 ? 1.0F : BrokenPixels::largest;
            for (int y = 0; y < picture.height(); ++y) {
                const BrokenPixels::Count row =
                    BrokenPixels::mend(picture.row(channel, y), picture.rowStride(), infinity);
                found.notNumbers += row.notNumbers;
                found.infinite += row.infinite;
            }
        }
        counter->add(frame.number, found);
    }

private:
    const std::shared_ptr<BrokenPixels> counter;
};

}  // namespace

BrokenPixels::Count BrokenPixels::mend(float* samples, std::size_t count, float infinity) {
    Count found;
    if (!hasBroken(samples, count)) {
        return found;
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (std::isnan(samples[i])) {
            ++found.notNumbers;
            samples[i] = 0;
        } else if (std::isinf(samples[i])) {
            ++found.infinite;
            samples[i] = samples[i] > 0 ? infinity : 0;
        }
    }
    return found;
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
