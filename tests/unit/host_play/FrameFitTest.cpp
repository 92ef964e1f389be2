#include "host/play/FrameFit.h"

#include <gtest/gtest.h>

#include "Kex/Image/LUT.h"

namespace Corvel {
namespace {

const Kex::Image::LUT& curve(const char* name) {
    return *Kex::Image::LUT::find(name);
}

Picture flat(int width, int height, float red, float green, float blue, int channels = 3) {
    Picture picture;
    picture.reset(width, height, channels);
    const float values[] = {red, green, blue, 0.5F};
    for (int channel = 0; channel < channels; ++channel) {
        for (int y = 0; y < height; ++y) {
            std::fill_n(picture.row(channel, y), width, values[channel]);
        }
    }
    return picture;
}

const float* pixelOf(const float* frame, int width, int x, int y) {
    return frame +
           (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 4;
}

void expectPixel(const float* pixel, double red, double green, double blue) {
    EXPECT_NEAR(pixel[0], red, 1e-5);
    EXPECT_NEAR(pixel[1], green, 1e-5);
    EXPECT_NEAR(pixel[2], blue, 1e-5);
    EXPECT_EQ(pixel[3], 1.0F);
}

TEST(FrameFit, APictureOfTheOutputsSizeOnlyGetsTheCurve) {
    Picture picture;
    picture.reset(3, 2, 3);
    for (int channel = 0; channel < 3; ++channel) {
        for (int y = 0; y < 2; ++y) {
            for (int x = 0; x < 3; ++x) {
                picture.row(channel, y)[x] = static_cast<float>(channel * 100 + y * 10 + x) / 250.0F;
            }
        }
    }
    FrameFit sut(3, 2, curve("srgb"));

    const float* frame = sut.fit(&picture, 1);

    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x) {
            expectPixel(pixelOf(frame, 3, x, y), curve("srgb").toStored((0 + y * 10 + x) / 250.0),
                        curve("srgb").toStored((100 + y * 10 + x) / 250.0),
                        curve("srgb").toStored((200 + y * 10 + x) / 250.0));
        }
    }
}

TEST(FrameFit, AlphaIsDroppedAndColoursStay) {
    const Picture picture = flat(4, 4, 0.1F, 0.2F, 0.3F, 4);
    FrameFit sut(4, 4, curve("linear"));

    expectPixel(pixelOf(sut.fit(&picture, 1), 4, 2, 2), 0.1, 0.2, 0.3);
}

TEST(FrameFit, AWidePictureStandsBetweenBlackBars) {
    const Picture picture = flat(40, 10, 0.25F, 0.5F, 1.0F);
    FrameFit sut(20, 20, curve("linear"));

    const float* frame = sut.fit(&picture, 1);

    // 4:1 in 20 x 20 is 20 x 5, from row 7 on.
    for (int x = 0; x < 20; ++x) {
        for (int y = 0; y < 20; ++y) {
            const bool inside = y >= 7 && y < 12;
            expectPixel(pixelOf(frame, 20, x, y), inside ? 0.25 : 0, inside ? 0.5 : 0, inside ? 1.0 : 0);
        }
    }
}

TEST(FrameFit, WidePixelsMakeAWidePicture) {
    const FrameFit sut(1920, 1080, curve("srgb"));

    const auto placeOf = [&sut](int pictureWidth, int pictureHeight, double pixelAspect) {
        const Placement placement = sut.placementOf(pictureWidth, pictureHeight, pixelAspect);
        return Window{placement.across.begin, placement.down.begin, placement.across.count,
                      placement.down.count};
    };
    EXPECT_EQ(placeOf(1440, 1080, 4.0 / 3), (Window{0, 0, 1920, 1080}));
    EXPECT_EQ(placeOf(2048, 858, 2.0), (Window{0, 339, 1920, 402}));
    EXPECT_EQ(placeOf(720, 576, 16.0 / 15), (Window{240, 0, 1440, 1080}));
}

TEST(FrameFit, APictureOfAnotherSizeLeavesNothingOfTheOneBefore) {
    const Picture wide = flat(40, 10, 1, 1, 1);
    const Picture narrow = flat(10, 40, 1, 1, 1);
    FrameFit sut(20, 20, curve("linear"));
    sut.fit(&wide, 1);

    const float* frame = sut.fit(&narrow, 1);

    expectPixel(pixelOf(frame, 20, 0, 10), 0, 0, 0);
    expectPixel(pixelOf(frame, 20, 10, 0), 1, 1, 1);
    expectPixel(pixelOf(frame, 20, 19, 19), 0, 0, 0);
}

TEST(FrameFit, NoPictureIsBlackInTheOutputsCurve) {
    const Picture white = flat(8, 8, 1, 1, 1);
    FrameFit sut(8, 8, curve("cineon"));
    sut.fit(&white, 1);

    const float* frame = sut.fit(nullptr, 1);

    const double black = curve("cineon").toStored(0.0);
    expectPixel(pixelOf(frame, 8, 0, 0), black, black, black);
    expectPixel(pixelOf(frame, 8, 7, 7), black, black, black);
}

TEST(FrameFit, ScalingHappensInLinearLight) {
    Picture picture;
    picture.reset(64, 64, 3);
    for (int channel = 0; channel < 3; ++channel) {
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 64; ++x) {
                picture.row(channel, y)[x] = static_cast<float>(x % 2);
            }
        }
    }
    FrameFit sut(16, 16, curve("srgb"));

    const float* frame = sut.fit(&picture, 1);

    // Black and white lines, too fine for the output, are half the light, not half the code value.
    EXPECT_NEAR(pixelOf(frame, 16, 8, 8)[1], curve("srgb").toStored(0.5), 0.02);
}

}  // namespace
}  // namespace Corvel
