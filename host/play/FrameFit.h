#pragma once

#include <optional>
#include <vector>

#include "host/geometry/RowResampler.h"

namespace Kex::Image {
class LUT;
}

namespace Corvel {

/// Makes the frames of a video output from decoded pictures: scales them to the output's size in linear
/// light, with the aspect kept and black around, and applies the output's curve. One thread.
///
/// They are mixed by triangles, two samples of each row where pictures get larger: a frame has some 20 ms.
class FrameFit {
public:
    /// For frames of `width` x `height` square pixels with the values of `curve`.
    FrameFit(int width, int height, const Kex::Image::LUT& curve);

    /// The frame for `picture`: width x height x 4 floats, RGBA, top row first, good until the next call. Its
    /// alpha is 1, since colours are premultiplied and black is behind them. `picture` null is a black frame;
    /// `pixelAspect` is the width of its pixels divided by their height. Throws std::bad_alloc.
    const float* fit(const Picture* picture, double pixelAspect);

    /// Where a picture of that size comes to stand.
    Placement placementOf(int pictureWidth, int pictureHeight, double pixelAspect) const;

private:
    void clear();
    void placePicture(const Picture& picture);
    void scalePicture(const Picture& picture);
    float* rowAt(int y);

    int width;
    int height;
    const Kex::Image::LUT& curve;
    std::vector<float> frame;
    std::optional<Placement> placement;  ///< of the frame that was made last, nothing for a black one
    std::optional<RowResampler> scaler;  ///< for `placement`, where it scales
};

}  // namespace Corvel
