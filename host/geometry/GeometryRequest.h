#pragma once

#include <optional>

namespace Corvel {

/// How pictures come into a movie of another size.
enum class Fit {
    LowerLeft,  ///< pixel for pixel, the lower left corners together
    Inside,     ///< scaled until they just fit, bars beside or above and below
    Fill,       ///< scaled until they cover all of it, what sticks out is cut off
    Stretch,    ///< scaled to its width and height, whatever that does to their shape
    Crop,       ///< pixel for pixel, the centres together
};

/// How samples are mixed when pictures are scaled; Resampling.h says what each one is.
enum class Filter { Nearest, Box, Triangle, Mitchell, CatmullRom, Lanczos };

/// A part of the input's pictures, in their pixels.
struct CropRequest {
    struct Corner {
        int x = 0;  ///< columns from the left
        int y = 0;  ///< rows from the top
    };

    int width = 0;
    int height = 0;
    std::optional<Corner> corner;  ///< nothing for the middle of the picture
};

/// Black over the edges of the movie's picture, so that what is seen has another shape.
struct MaskRequest {
    double aspect = 0;   ///< width divided by height of what is seen, as it is seen
    double opacity = 1;  ///< share of the light that the black takes, 0 to 1
};

/// What a person asks of the geometry of pictures, besides the movie's format.
struct GeometryRequest {
    std::optional<Fit> fit;
    Filter filter = Filter::Lanczos;
    std::optional<CropRequest> crop;
    std::optional<MaskRequest> mask;
};

}  // namespace Corvel
