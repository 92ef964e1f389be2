#pragma once

#include <optional>
#include <vector>

#include "host/images/Picture.h"
#include "host/play/FrameScaler.h"

namespace Kex::Image {
class LUT;
}

namespace Corvel {

/// Makes the frames of a video output from decoded pictures: scales them to the output's size in linear
/// light, with the aspect kept and black around, and applies the output's curve. One thread.
class FrameFit {
public:
    /// For frames of `width` x `height` square pixels with the values of `curve`.
    FrameFit(int width, int height, const Kex::Image::LUT& curve);

    /// The frame for `picture`: width x height x 4 floats, RGBA, top row first, good until the next call. Its
    /// alpha is 1, since colours are premultiplied and black is behind them. `picture` null is a black frame;
    /// `pixelAspect` is the width of its pixels divided by their height. Throws std::bad_alloc.
    const float* fit(const Picture* picture, double pixelAspect);

    /// Where a picture of that size comes to stand, in pixels of the output.
    Window placeOf(int pictureWidth, int pictureHeight, double pixelAspect) const;

private:
    void clearAround(const Window& place);
    void placePicture(const Picture& picture, const Window& place);
    void placeScaled(const Picture& picture, const Window& place);
    float* rowAt(const Window& place, int y);

    int width;
    int height;
    const Kex::Image::LUT& curve;
    std::vector<float> frame;
    std::optional<Window> filled;  ///< where the frame is not black
    std::optional<FrameScaler> scaler;
};

}  // namespace Corvel
