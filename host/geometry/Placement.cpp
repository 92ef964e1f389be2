#include "host/geometry/Placement.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Corvel {
namespace {

// Samples of the source that stay as they are, `offset` samples of the output after its first one.
Span copied(int source, int output, int offset) {
    const int begin = std::max(offset, 0);
    const int end = std::min(offset + source, output);
    const int count = std::max(end - begin, 0);
    return {static_cast<double>(begin - offset), static_cast<double>(count), begin, count};
}

// Half of it rounded down, so that what is left over goes to the right and to the bottom.
int middle(int source, int output) {
    return static_cast<int>(std::floor((output - source) / 2.0));
}

// The whole source, `scale` samples of the output for each of its own, in the middle.
Span inside(int source, int output, double scale) {
    const int count = std::clamp(static_cast<int>(std::lround(source * scale)), 1, output);
    return {0, static_cast<double>(source), middle(count, output), count};
}

// The middle of the source, as much of it as there is room for.
Span filling(int source, int output, double scale) {
    // A rounding error more than the source would be black.
    const double seen = std::min(output / scale, static_cast<double>(source));
    return {(source - seen) / 2, seen, 0, output};
}

}  // namespace

bool Span::isCopy() const {
    return length == count && first == std::floor(first);
}

Window croppedWindow(const CropRequest& crop, int width, int height) {
    const CropRequest::Corner corner =
        crop.corner.value_or(CropRequest::Corner{middle(crop.width, width), middle(crop.height, height)});
    const Window window{corner.x, corner.y, crop.width, crop.height};
    if (overlapOf(window, {0, 0, width, height}) != window) {
        throw std::invalid_argument(
            fmt::format("a crop of {} x {} pixels at {},{} does not lie within pictures of {} x {} pixels",
                        crop.width, crop.height, corner.x, corner.y, width, height));
    }
    return window;
}

Placement placementOf(const Raster& from, const Window& source, const Raster& to, Fit fit) {
    Placement placed{from.width, from.height, source, to.width, to.height, {}, {}};
    // Samples of the output for one of the source, were the picture as wide or as high as the output.
    const double squeeze = from.pixelAspect / to.pixelAspect;
    const double byWidth = to.width / (source.width * squeeze);
    const double byHeight = static_cast<double>(to.height) / source.height;
    const double scale = fit == Fit::Inside ? std::min(byWidth, byHeight) : std::max(byWidth, byHeight);
    switch (fit) {
        case Fit::LowerLeft:
            placed.across = copied(source.width, to.width, 0);
            placed.down = copied(source.height, to.height, to.height - source.height);
            break;
        case Fit::Crop:
            placed.across = copied(source.width, to.width, middle(source.width, to.width));
            placed.down = copied(source.height, to.height, middle(source.height, to.height));
            break;
        case Fit::Stretch:
            placed.across = {0, static_cast<double>(source.width), 0, to.width};
            placed.down = {0, static_cast<double>(source.height), 0, to.height};
            break;
        case Fit::Inside:
            placed.across = inside(source.width, to.width, scale * squeeze);
            placed.down = inside(source.height, to.height, scale);
            break;
        case Fit::Fill:
            placed.across = filling(source.width, to.width, scale * squeeze);
            placed.down = filling(source.height, to.height, scale);
            break;
    }
    return placed;
}

Window seenThrough(const MaskRequest& mask, const Raster& picture) {
    const double aspect = picture.width * picture.pixelAspect / picture.height;
    const auto taken = [](int all, double share) {
        return std::clamp(static_cast<int>(std::lround(all * (1 - share) / 2)), 0, (all - 1) / 2);
    };
    if (mask.aspect > aspect) {
        const int rows = taken(picture.height, aspect / mask.aspect);
        return {0, rows, picture.width, picture.height - 2 * rows};
    }
    const int columns = taken(picture.width, mask.aspect / aspect);
    return {columns, 0, picture.width - 2 * columns, picture.height};
}

}  // namespace Corvel
