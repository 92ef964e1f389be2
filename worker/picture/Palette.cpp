#include "worker/picture/Palette.h"

#include "worker/picture/RowKernels.h"
#include "worker/picture/StripConverter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Morvane::Worker {

namespace {

constexpr int levels = 6;
constexpr int cubeColours = levels * levels * levels;
constexpr int greys = 256 - cubeColours;
constexpr int rowsOfAStrip = 32;

std::uint32_t opaque(int red, int green, int blue) {
    return 0xFF000000U | static_cast<std::uint32_t>(red << 16 | green << 8 | blue);
}

/// Greys at even distances, without black and white, which the cube has.
int greyLevel(int grey) {
    return (255 * (grey + 1) + (greys + 1) / 2) / (greys + 1);
}

std::array<std::uint32_t, 256> makePalette() {
    std::array<std::uint32_t, 256> palette{};
    for (int index = 0; index < cubeColours; ++index)
        palette[index] = opaque(index / 36 * 51, index / 6 % 6 * 51, index % 6 * 51);
    for (int grey = 0; grey < greys; ++grey)
        palette[cubeColours + grey] = opaque(greyLevel(grey), greyLevel(grey), greyLevel(grey));
    return palette;
}

float squaredDistance(std::uint32_t colour, float red, float green, float blue) {
    const auto square = [](float one, std::uint32_t other) {
        const float difference = one * 255 - static_cast<float>(other & 0xFF);
        return difference * difference;
    };
    return square(red, colour >> 16) + square(green, colour >> 8) + square(blue, colour);
}

class PaletteConverter : public StripConverter {
public:
    PaletteConverter(const EncodingPlan& encodingPlan, int members) : plan(encodingPlan), scratch(members) {}

    int stripRows() const override { return rowsOfAStrip; }

    void convert(const RowSource& rows, int firstRow, int rowCount, int member, AVFrame& target) override {
        for (int y = firstRow; y < firstRow + rowCount; ++y) {
            const float* pixels = rows.pixels(y, scratch[member]);
            std::uint8_t* out = target.data[0] + static_cast<std::ptrdiff_t>(y) * target.linesize[0];
            for (int x = 0; x < plan.width; ++x)
                out[x] = nearestPaletteIndex(pixels[4 * x], pixels[4 * x + 1], pixels[4 * x + 2]);
        }
        if (firstRow == 0)
            std::memcpy(target.data[1], fixedPalette().data(), sizeof fixedPalette());
    }

private:
    const EncodingPlan& plan;
    std::vector<std::vector<float>> scratch;
};

}  // namespace

const std::array<std::uint32_t, 256>& fixedPalette() {
    static const std::array<std::uint32_t, 256> palette = makePalette();
    return palette;
}

std::uint8_t nearestPaletteIndex(float red, float green, float blue) {
    const auto limited = [](float value) { return std::isnan(value) ? 0.0F : std::clamp(value, 0.0F, 1.0F); };
    red = limited(red);
    green = limited(green);
    blue = limited(blue);
    const auto level = [](float value) { return static_cast<int>(std::lround(value * (levels - 1))); };
    const int cube = level(red) * 36 + level(green) * 6 + level(blue);
    const float mean = (red + green + blue) / 3;
    const int grey =
        std::clamp(static_cast<int>(std::lround(mean * (greys + 1))) - 1, 0, greys - 1) + cubeColours;
    const auto& palette = fixedPalette();
    const bool greyIsNearer =
        squaredDistance(palette[grey], red, green, blue) < squaredDistance(palette[cube], red, green, blue);
    return static_cast<std::uint8_t>(greyIsNearer ? grey : cube);
}

std::unique_ptr<StripConverter> makePaletteConverter(const EncodingPlan& plan, int members) {
    return std::make_unique<PaletteConverter>(plan, members);
}

}  // namespace Morvane::Worker
