#include "worker/picture/Palette.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace Morvane::Worker {
namespace {

TEST(Palette, HoldsCubeAndGreysOnceEach) {
    const auto& palette = fixedPalette();
    EXPECT_EQ(palette[0], 0xFF000000U);
    EXPECT_EQ(palette[215], 0xFFFFFFFFU);
    EXPECT_EQ(palette[5 * 36], 0xFFFF0000U);
    EXPECT_EQ(std::set<std::uint32_t>(palette.begin(), palette.begin() + 216).size(), 216U);
    for (std::size_t grey = 216; grey < 256; ++grey) {
        EXPECT_EQ(palette[grey] & 0xFF, palette[grey] >> 8 & 0xFF);
        EXPECT_EQ(palette[grey] & 0xFF, palette[grey] >> 16 & 0xFF);
    }
}

TEST(Palette, EveryColourOfTheCubeIsItsOwnNearest) {
    for (int index = 0; index < 216; ++index) {
        const std::uint32_t colour = fixedPalette()[index];
        const auto channel = [&](int shift) { return static_cast<float>(colour >> shift & 0xFF) / 255; };
        EXPECT_EQ(fixedPalette()[nearestPaletteIndex(channel(16), channel(8), channel(0))], colour);
    }
}

TEST(Palette, GreysAreFinerThanTheCube) {
    for (float grey = 0; grey <= 1; grey += 0.01F) {
        const std::uint32_t colour = fixedPalette()[nearestPaletteIndex(grey, grey, grey)];
        EXPECT_NEAR(static_cast<float>(colour & 0xFF) / 255, grey, 0.02F);
    }
}

TEST(Palette, ValuesOutsideAreLimited) {
    EXPECT_EQ(fixedPalette()[nearestPaletteIndex(7, -7, std::nanf(""))], 0xFFFF0000U);
}

}  // namespace
}  // namespace Morvane::Worker
