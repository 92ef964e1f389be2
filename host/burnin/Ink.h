#pragma once

#include <array>

#include "Kex/Image/LUT.h"
#include "host/burnin/TextLibrary.h"
#include "host/images/Picture.h"

namespace Corvel {

/// A colour in the values of the display, 0 to 1, and how much of what is below it hides.
struct Ink {
    std::array<float, 3> colour{};
    float opacity = 1;

    bool operator==(const Ink&) const = default;
};

/// What the samples of a picture mean to somebody who paints on it.
struct DisplayValues {
    const Kex::Image::LUT* curve = nullptr;  ///< that the linear samples will get; null: they have theirs
    float white = 1;                         ///< value of the display's ordinary white
};

/// Paints `ink` over a rectangle and, on top of it, `letters` with their upper left corner at `x`, `y`. Mixed
/// in the display's values, as everything that is drawn on screens; below the ink these are held between
/// black and white, so that letters can be read over any highlight. Alpha becomes as opaque. What lies
/// outside of the picture is left out. Nothing outside of the rectangle is touched: letters outside of it are
/// cut off.
void paint(Picture& picture, const DisplayValues& values, const Window& rectangle, const Ink& ink,
           const Coverage& letters, int x, int y, const Ink& letterInk);

/// The rectangle alone.
void paint(Picture& picture, const DisplayValues& values, const Window& rectangle, const Ink& ink);

}  // namespace Corvel
