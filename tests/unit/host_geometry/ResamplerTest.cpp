#include "host/geometry/Resampler.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace Corvel {
namespace {

// Waves of a few pixels, different in each channel, so that filters have something to get wrong.
float waveAt(int channel, int x, int y) {
    return static_cast<float>(0.5 + 0.4 * std::sin(x * (0.31 + channel * 0.1)) * std::cos(y * 0.23));
}

Picture waves(int width, int height, int channels) {
    Picture picture;
    picture.reset(width, height, channels);
    for (int channel = 0; channel < channels; ++channel) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                picture.row(channel, y)[x] = waveAt(channel, x, y);
            }
        }
    }
    return picture;
}

Placement whole(const Picture& from, int width, int height, Fit fit = Fit::Stretch) {
    return placementOf({from.width(), from.height(), 1}, {0, 0, from.width(), from.height()},
                       {width, height, 1}, fit);
}

Picture placed(const Picture& from, const Placement& placement, Filter filter) {
    Picture to;
    Resampler(placement, filter).place(from, to);
    return to;
}

// The largest difference from what the image library makes of the waves, but for the edges, where it takes
// the samples beyond them for the last ones.
double differenceFromLibrary(int width, int height, Filter filter, const char* name, float reach) {
    constexpr int fromWidth = 97, fromHeight = 61;
    OIIO::ImageBuf from(OIIO::ImageSpec(fromWidth, fromHeight, 3, OIIO::TypeFloat));
    for (OIIO::ImageBuf::Iterator<float> pixel(from); !pixel.done(); ++pixel) {
        for (int channel = 0; channel < 3; ++channel) {
            pixel[channel] = waveAt(channel, pixel.x(), pixel.y());
        }
    }
    const float widening = std::max(1.0F, static_cast<float>(width) / fromWidth);
    const OIIO::ImageBuf resized = OIIO::ImageBufAlgo::resize(from, name, reach * widening,
                                                              OIIO::ROI(0, width, 0, height, 0, 1, 0, 3), 1);
    const Picture waved = waves(fromWidth, fromHeight, 3);
    const Picture ours = placed(waved, whole(waved, width, height), filter);
    const int edge = width / 10;
    double largest = 0;
    for (int channel = 0; channel < 3; ++channel) {
        for (int y = edge; y < height - edge; ++y) {
            for (int x = edge; x < width - edge; ++x) {
                largest =
                    std::max(largest, static_cast<double>(std::abs(ours.row(channel, y)[x] -
                                                                   resized.getchannel(x, y, 0, channel))));
            }
        }
    }
    return largest;
}

TEST(Resampler, ScalesAsTheImageLibraryDoes) {
    for (const auto& [width, height] : {std::pair{40, 25}, {64, 40}, {97 * 2, 61 * 2}}) {
        EXPECT_LT(differenceFromLibrary(width, height, Filter::Triangle, "triangle", 2), 0.005) << width;
        EXPECT_LT(differenceFromLibrary(width, height, Filter::Mitchell, "mitchell", 4), 0.005) << width;
        // The library lets results go beyond the samples at the tops of the waves.
        EXPECT_LT(differenceFromLibrary(width, height, Filter::CatmullRom, "catmull-rom", 4), 0.015) << width;
        EXPECT_LT(differenceFromLibrary(width, height, Filter::Lanczos, "lanczos3", 6), 0.015) << width;
    }
}

TEST(Resampler, AFlatPictureStaysFlatToItsEdges) {
    Picture flat;
    flat.reset(13, 9, 4);
    std::fill_n(flat.row(0, 0), flat.planeStride() * 4, 0.25F);
    for (const Filter filter : {Filter::Box, Filter::Triangle, Filter::Mitchell, Filter::Lanczos}) {
        const Picture sut = placed(flat, whole(flat, 31, 4), filter);
        EXPECT_EQ(sut.channels(), 4);
        for (std::size_t i = 0; i < sut.planeStride() * 4; ++i) {
            EXPECT_NEAR(sut.row(0, 0)[i], 0.25F, 1e-6F);
        }
    }
}

TEST(Resampler, DrawsNoRimAroundHighlights) {
    Picture spot;
    spot.reset(40, 40, 3);
    std::fill_n(spot.row(0, 0), spot.planeStride() * 3, 0.1F);
    spot.row(0, 20)[20] = 5000;
    for (const Filter filter : {Filter::Mitchell, Filter::CatmullRom, Filter::Lanczos}) {
        for (const int size : {25, 90}) {
            const Picture sut = placed(spot, whole(spot, size, size), filter);
            const float* const end = sut.row(0, 0) + sut.planeStride();
            EXPECT_GE(*std::min_element(sut.row(0, 0), end), 0.0999F);
            EXPECT_GT(*std::max_element(sut.row(0, 0), end), 100.0F);
        }
    }
}

TEST(Resampler, TheLargestSamplesStayFinite) {
    Picture largest;
    largest.reset(16, 16, 3);
    for (std::size_t i = 0; i < largest.planeStride() * 3; ++i) {
        largest.row(0, 0)[i] = i % 3 == 0 ? 3.4e38F : -3.4e38F;
    }
    for (const Filter filter : {Filter::Triangle, Filter::Lanczos}) {
        const Picture sut = placed(largest, whole(largest, 11, 27), filter);
        EXPECT_TRUE(std::all_of(sut.row(0, 0), sut.row(0, 0) + sut.planeStride() * 3,
                                [](float sample) { return std::isfinite(sample); }));
    }
}

TEST(Resampler, WhatIsNotPlacedIsBlackWhateverWasThere) {
    const Picture from = waves(8, 4, 4);
    Resampler sut(whole(from, 8, 8, Fit::Inside), Filter::Lanczos);
    Picture to = waves(8, 8, 4);
    sut.place(from, to);
    for (const int y : {0, 1, 6, 7}) {
        EXPECT_TRUE(std::all_of(to.row(3, y), to.row(3, y) + 8, [](float sample) { return sample == 0; }));
    }
    for (int y = 0; y < 4; ++y) {
        EXPECT_TRUE(std::equal(to.row(2, y + 2), to.row(2, y + 2) + 8, from.row(2, y))) << "not scaled";
    }
}

TEST(Resampler, OnlyTheCroppedPartIsLookedAt) {
    Picture from = waves(20, 20, 3);
    for (int y = 0; y < 20; ++y) {
        std::fill_n(from.row(0, y), 10, 1000.0F);
    }
    const Placement right = placementOf({20, 20, 1}, {10, 0, 10, 20}, {7, 9, 1}, Fit::Stretch);
    const Picture sut = placed(from, right, Filter::Lanczos);
    EXPECT_LT(*std::max_element(sut.row(0, 0), sut.row(0, 0) + sut.planeStride()), 1.5F);
}

}  // namespace
}  // namespace Corvel
