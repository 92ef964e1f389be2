#pragma once

#include "host/geometry/GeometryRequest.h"
#include "host/images/Picture.h"

namespace Corvel {

/// Size in pixels and their shape: width of a pixel divided by its height.
struct Raster {
    int width = 0;
    int height = 0;
    double pixelAspect = 1;
};

/// One direction of a placement: `count` samples of the output, from `begin` on, show `length` samples of the
/// source, from `first` on. `first` and `length` need not be whole.
struct Span {
    double first = 0;
    double length = 0;
    int begin = 0;
    int count = 0;

    /// Whether samples stay what they are, each one whole.
    bool isCopy() const;

    bool operator==(const Span&) const = default;
};

/// Which part of a picture comes where in the movie's. Rows count from the top.
struct Placement {
    int fromWidth = 0;  ///< of the pictures that come
    int fromHeight = 0;
    Window source;  ///< the part of them that is there at all; spans count from its corner
    int width = 0;  ///< of the pictures that are made
    int height = 0;
    Span across;
    Span down;

    /// Whether what is placed stays pixel for pixel.
    bool isCopy() const { return across.isCopy() && down.isCopy(); }

    bool operator==(const Placement&) const = default;
};

/// The part of a picture of `width` x `height` that is asked for. Throws std::invalid_argument with a
/// sentence where it does not lie within the picture.
Window croppedWindow(const CropRequest& crop, int width, int height);

/// Places `source`, a part of pictures of `from`, in pictures of `to`. Pixels are taken for as wide as their
/// aspect says, but where they stay pixel for pixel. Scaled pictures get whole numbers of rows and columns.
Placement placementOf(const Raster& from, const Window& source, const Raster& to, Fit fit);

/// What a mask leaves to be seen of a picture: whole rows or columns, the same number taken away at both
/// sides.
Window seenThrough(const MaskRequest& mask, const Raster& picture);

}  // namespace Corvel
