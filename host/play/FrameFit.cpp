#include "host/play/FrameFit.h"

#include <algorithm>
#include <cmath>

#include "Kex/Image/LUT.h"

namespace Corvel {

FrameFit::FrameFit(int width, int height, const Kex::Image::LUT& curve)
    : width(width),
      height(height),
      curve(curve),
      frame(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4) {}

Window FrameFit::placeOf(int pictureWidth, int pictureHeight, double pixelAspect) const {
    const double shownWidth = pictureWidth * (pixelAspect > 0 ? pixelAspect : 1);
    const double factor = std::min(width / shownWidth, height / static_cast<double>(pictureHeight));
    const int placeWidth = std::clamp(static_cast<int>(std::lround(shownWidth * factor)), 1, width);
    const int placeHeight = std::clamp(static_cast<int>(std::lround(pictureHeight * factor)), 1, height);
    return {(width - placeWidth) / 2, (height - placeHeight) / 2, placeWidth, placeHeight};
}

const float* FrameFit::fit(const Picture* picture, double pixelAspect) {
    const Window place =
        picture != nullptr ? placeOf(picture->width(), picture->height(), pixelAspect) : Window();
    if (filled != place) {
        clearAround(place);
    }
    if (picture != nullptr && picture->width() == place.width && picture->height() == place.height) {
        placePicture(*picture, place);
    } else if (picture != nullptr) {
        placeScaled(*picture, place);
    }
    return frame.data();
}

/// Makes the whole frame black and opaque, for frames that from now on all stand in `place`.
void FrameFit::clearAround(const Window& place) {
    const auto black = static_cast<float>(curve.toStored(0.0));
    for (std::size_t sample = 0; sample < frame.size(); ++sample) {
        frame[sample] = sample % 4 == 3 ? 1.0F : black;
    }
    filled = place;
}

float* FrameFit::rowAt(const Window& place, int y) {
    const std::size_t pixel = static_cast<std::size_t>(place.y + y) * static_cast<std::size_t>(width) +
                              static_cast<std::size_t>(place.x);
    return frame.data() + pixel * 4;
}

void FrameFit::placePicture(const Picture& picture, const Window& place) {
    for (int y = 0; y < place.height; ++y) {
        for (int channel = 0; channel < 3; ++channel) {
            curve.toStored(rowAt(place, y) + channel, picture.row(channel, y),
                           static_cast<std::size_t>(place.width), 4);
        }
    }
}

void FrameFit::placeScaled(const Picture& picture, const Window& place) {
    if (!scaler || !scaler->isFor(picture.width(), picture.height(), place.width, place.height)) {
        scaler.emplace(picture.width(), picture.height(), place.width, place.height);
    }
    const std::size_t samples = static_cast<std::size_t>(place.width) * 4;
    for (int y = 0; y < place.height; ++y) {
        float* const row = rowAt(place, y);
        scaler->scaleRow(picture, y, row);
        curve.toStored(row, row, samples, 1);
        for (std::size_t alpha = 3; alpha < samples; alpha += 4) {
            row[alpha] = 1.0F;
        }
    }
}

}  // namespace Corvel
