#include "host/images/PlacePixels.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

#include "host/images/SplitKernels.h"

namespace Corvel {
namespace {

// One row, from column `left` of the picture on, out of the pixels at `from`. `planes` is scratch memory, one
// for each channel of the pixels.
void placeRow(const InterleavedPixels& pixels, const float* from, Picture& picture, int y, int left,
              std::size_t count, std::vector<float*>& planes) {
    const auto planeOf = [&](int channel) { return picture.row(channel, y) + left; };
    const int sources[4] = {pixels.layout.red, pixels.layout.green, pixels.layout.blue, pixels.layout.alpha};
    std::fill(planes.begin(), planes.end(), nullptr);
    for (int channel = 0; channel < picture.channels(); ++channel) {
        planes[static_cast<std::size_t>(sources[channel])] = planeOf(channel);
    }
    splitPixels(from, pixels.channels, count, planes.data());

    for (int channel = 0; channel < picture.channels(); ++channel) {
        // Of channels with one source, as in a grey picture, only the last one was filled.
        const float* filled = planes[static_cast<std::size_t>(sources[channel])];
        if (filled != planeOf(channel)) {
            std::copy_n(filled, count, planeOf(channel));
        }
    }
    for (int channel = 0; channel < 3; ++channel) {
        float* to = planeOf(channel);
        if (pixels.curve.type() != 0) {
            pixels.curve.toLinear(to, to, count, 1);
        }
        if (pixels.straightAlpha) {
            std::transform(to, to + count, planeOf(3), to, std::multiplies<>());
        }
    }
}

void clearUncovered(const PictureHeader& header, Picture& picture) {
    if (overlapOf(header.data, header.display) != header.display) {
        picture.clear();
    }
}

}  // namespace

void prepareFor(const PictureHeader& header, Picture& picture) {
    picture.reset(header.display.width, header.display.height, header.hasAlpha ? 4 : 3);
    clearUncovered(header, picture);
}

void prepareCodesFor(const PictureHeader& header, const Kex::Image::CodeTable& table, Picture& picture) {
    picture.resetCodes(header.display.width, header.display.height, header.hasAlpha ? 4 : 3, table);
    clearUncovered(header, picture);
}

void linearise(const PictureHeader& header, const Kex::Image::LUT& curve, Picture& picture) {
    if (curve.type() == 0) {
        return;
    }
    const Window shown = overlapOf(header.data, header.display);
    for (int channel = 0; channel < 3; ++channel) {
        for (int y = 0; y < shown.height; ++y) {
            float* row = picture.row(channel, shown.y - header.display.y + y) + (shown.x - header.display.x);
            curve.toLinear(row, row, static_cast<std::size_t>(shown.width), 1);
        }
    }
}

void placePixels(const InterleavedPixels& pixels, const Window& display, Picture& picture) {
    const Window& data = pixels.window;
    const Window shown = overlapOf(data, display);
    std::vector<float*> planes(static_cast<std::size_t>(pixels.channels));
    for (int y = shown.y; y < shown.y + shown.height; ++y) {
        const std::int64_t row = std::int64_t{y} - data.y;
        const std::int64_t column = std::int64_t{shown.x} - data.x;
        const float* from = pixels.samples + (row * data.width + column) * pixels.channels;
        placeRow(pixels, from, picture, y - display.y, shown.x - display.x,
                 static_cast<std::size_t>(shown.width), planes);
    }
}

}  // namespace Corvel
