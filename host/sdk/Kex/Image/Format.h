#pragma once

namespace Kex::Image {

/// Size of a picture in pixels and the shape of one pixel. Rows are numbered from the bottom: row 0 is the
/// lowest, row `height - 1` the highest; columns from the left.
class Format {
public:
    constexpr Format() = default;
    constexpr Format(int pixelsWide, int pixelsHigh, double aspect = 1.0)
        : width_(pixelsWide), height_(pixelsHigh), pixelAspect_(aspect) {}

    constexpr int width() const { return width_; }
    constexpr int height() const { return height_; }
    /// Width of a pixel divided by its height.
    constexpr double pixelAspect() const { return pixelAspect_; }

    constexpr bool operator==(const Format&) const = default;

private:
    int width_ = 0;
    int height_ = 0;
    double pixelAspect_ = 1.0;
};

}  // namespace Kex::Image
