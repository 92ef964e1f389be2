#include "host/colour/ColourStep.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "host/colour/BrokenPixels.h"

namespace Corvel {
namespace {

class ColourStep : public PictureStep {
public:
    explicit ColourStep(std::shared_ptr<const ColourTransform> shared) : transform(std::move(shared)) {}

    void apply(const FrameUnderWay&, Picture& picture) override {
        const std::size_t count = picture.rowStride();
        for (int y = 0; y < picture.height(); ++y) {
            const float* const alpha = picture.hasAlpha() ? picture.row(3, y) : nullptr;
            const bool translucent =
                alpha != nullptr && std::any_of(alpha, alpha + count, [](float a) { return a != 1.0F; });
            if (translucent) {
                divide(picture, y, alpha, count);
            }
            transform->apply(picture.row(0, y), picture.row(1, y), picture.row(2, y), count, scratch);
            for (int channel = 0; channel < 3; ++channel) {
                BrokenPixels::mend(picture.row(channel, y), count, BrokenPixels::largest);
            }
            if (translucent) {
                multiply(picture, y, count);
            }
        }
    }

private:
    // What has neither alpha nor colour is noted: it stays nothing, also where the transform lifts black.
    void divide(Picture& picture, int y, const float* alpha, std::size_t count) {
        factors.resize(count);
        for (std::size_t x = 0; x < count; ++x) {
            const bool empty =
                picture.row(0, y)[x] == 0 && picture.row(1, y)[x] == 0 && picture.row(2, y)[x] == 0;
            factors[x] = alpha[x] != 0 ? alpha[x] : empty ? 0.0F : 1.0F;
        }
        for (int channel = 0; channel < 3; ++channel) {
            float* const row = picture.row(channel, y);
            for (std::size_t x = 0; x < count; ++x) {
                row[x] = factors[x] != 0 ? row[x] / factors[x] : row[x];
            }
        }
    }

    void multiply(Picture& picture, int y, std::size_t count) const {
        for (int channel = 0; channel < 3; ++channel) {
            float* const row = picture.row(channel, y);
            std::transform(row, row + count, factors.data(), row, std::multiplies<>());
        }
    }

    const std::shared_ptr<const ColourTransform> transform;
    std::vector<float> scratch;
    std::vector<float> factors;
};

}  // namespace

std::unique_ptr<PictureStep> makeColourStep(std::shared_ptr<const ColourTransform> transform) {
    return std::make_unique<ColourStep>(std::move(transform));
}

}  // namespace Corvel
