#include "host/play/FrameFit.h"

#include "Kex/Image/LUT.h"

namespace Corvel {

FrameFit::FrameFit(int width, int height, const Kex::Image::LUT& curve)
    : width(width),
      height(height),
      curve(curve),
      frame(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4) {
    clear();
}

Placement FrameFit::placementOf(int pictureWidth, int pictureHeight, double pixelAspect) const {
    return Corvel::placementOf({pictureWidth, pictureHeight, pixelAspect > 0 ? pixelAspect : 1},
                               {0, 0, pictureWidth, pictureHeight}, {width, height, 1}, Fit::Inside);
}

const float* FrameFit::fit(const Picture* picture, double pixelAspect) {
    std::optional<Placement> wanted;
    if (picture != nullptr) {
        wanted = placementOf(picture->width(), picture->height(), pixelAspect);
    }
    if (placement != wanted) {
        clear();
        placement = wanted;
        scaler.reset();
    }
    if (picture != nullptr) {
        placement->isCopy() ? placePicture(*picture) : scalePicture(*picture);
    }
    return frame.data();
}

/// Makes the whole frame black and opaque.
void FrameFit::clear() {
    const auto black = static_cast<float>(curve.toStored(0.0));
    for (std::size_t sample = 0; sample < frame.size(); ++sample) {
        frame[sample] = sample % 4 == 3 ? 1.0F : black;
    }
}

/// Where row `y` of what is placed begins.
float* FrameFit::rowAt(int y) {
    const int row = placement->down.begin + y;
    const int column = placement->across.begin;
    return frame.data() + (static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                           static_cast<std::size_t>(column)) *
                              4;
}

void FrameFit::placePicture(const Picture& picture) {
    for (int y = 0; y < placement->down.count; ++y) {
        for (int channel = 0; channel < 3; ++channel) {
            curve.toStored(rowAt(y) + channel, picture.row(channel, y),
                           static_cast<std::size_t>(placement->across.count), 4);
        }
    }
}

void FrameFit::scalePicture(const Picture& picture) {
    if (!scaler) {
        scaler.emplace(*placement, Filter::Triangle);
    }
    const std::size_t samples = static_cast<std::size_t>(placement->across.count) * 4;
    for (int y = 0; y < placement->down.count; ++y) {
        float* const row = rowAt(y);
        scaler->makeRow(picture, y, row);
        curve.toStored(row, row, samples, 1);
        for (std::size_t alpha = 3; alpha < samples; alpha += 4) {
            row[alpha] = 1.0F;
        }
    }
}

}  // namespace Corvel
