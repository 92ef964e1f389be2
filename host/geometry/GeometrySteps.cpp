#include "host/geometry/GeometrySteps.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "host/geometry/Resampler.h"
#include "host/images/ImageReader.h"

namespace Corvel {
namespace {

class PlacementStep : public PictureStep {
public:
    PlacementStep(const Placement& wanted, Filter filter) : placement(wanted), resampler(wanted, filter) {}

    void apply(const FrameUnderWay& frame, Picture& picture) override {
        if (picture.width() != placement.fromWidth || picture.height() != placement.fromHeight) {
            throw UnreadableImage(fmt::format("frame {} has {} x {} pixels, not {} x {} as the first frame",
                                              frame.number, picture.width(), picture.height(),
                                              placement.fromWidth, placement.fromHeight));
        }
        resampler.place(picture, placed);
        std::swap(picture, placed);
    }

private:
    const Placement placement;
    Resampler resampler;
    Picture placed;  // the one that goes out; then the memory of the one that came in
};

class MaskStep : public PictureStep {
public:
    MaskStep(const Window& what, double howMuch) : seen(what), opacity(static_cast<float>(howMuch)) {}

    void apply(const FrameUnderWay&, Picture& picture) override {
        for (int channel = 0; channel < picture.channels(); ++channel) {
            for (int y = 0; y < picture.height(); ++y) {
                float* const row = picture.row(channel, y);
                const bool hidden = y < seen.y || y >= seen.y + seen.height;
                hide(channel, row, row + (hidden ? picture.width() : seen.x));
                hide(channel, row + (hidden ? picture.width() : seen.x + seen.width), row + picture.width());
            }
        }
    }

private:
    void hide(int channel, float* begin, float* end) const {
        const float black = channel == 3 ? opacity : 0;
        std::transform(begin, end, begin,
                       [this, black](float sample) { return sample * (1 - opacity) + black; });
    }

    const Window seen;
    const float opacity;
};

}  // namespace

std::unique_ptr<PictureStep> makePlacementStep(const Placement& placement, Filter filter) {
    return std::make_unique<PlacementStep>(placement, filter);
}

std::unique_ptr<PictureStep> makeMaskStep(const Window& seen, double opacity) {
    return std::make_unique<MaskStep>(seen, opacity);
}

}  // namespace Corvel
