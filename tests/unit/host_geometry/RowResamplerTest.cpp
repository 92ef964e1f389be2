#include "host/geometry/RowResampler.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <gtest/gtest.h>

#include <random>

namespace Corvel {
namespace {

Picture noise(int width, int height) {
    Picture picture;
    picture.reset(width, height, 3);
    std::mt19937 random(7);
    std::uniform_real_distribution<float> values(-0.5F, 4.0F);
    for (int channel = 0; channel < 3; ++channel) {
        for (int y = 0; y < height; ++y) {
            std::generate_n(picture.row(channel, y), width, [&] { return values(random); });
        }
    }
    return picture;
}

/// One channel, scaled by the image library with the same kind of filter.
std::vector<float> scaledByTheLibrary(const Picture& picture, int channel, int width, int height) {
    const OIIO::ImageSpec from(picture.width(), picture.height(), 1, OIIO::TypeDesc::FLOAT);
    const OIIO::ImageSpec to(width, height, 1, OIIO::TypeDesc::FLOAT);
    std::vector<float> samples(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const OIIO::ImageBuf source(from, const_cast<float*>(picture.row(channel, 0)));
    OIIO::ImageBuf target(to, samples.data());
    EXPECT_TRUE(OIIO::ImageBufAlgo::resize(target, source, "triangle"));
    return samples;
}

RowResampler stretched(int fromWidth, int fromHeight, int toWidth, int toHeight) {
    const Placement placement = placementOf({fromWidth, fromHeight, 1}, {0, 0, fromWidth, fromHeight},
                                            {toWidth, toHeight, 1}, Fit::Stretch);
    return {placement, Filter::Triangle};
}

struct Sizes {
    int fromWidth, fromHeight, toWidth, toHeight;
};

class RowResamplerOfAnySizes : public testing::TestWithParam<Sizes> {};

TEST_P(RowResamplerOfAnySizes, AgreesWithTheImageLibraryAwayFromTheEdges) {
    const Sizes sizes = GetParam();
    const Picture picture = noise(sizes.fromWidth, sizes.fromHeight);
    RowResampler sut = stretched(sizes.fromWidth, sizes.fromHeight, sizes.toWidth, sizes.toHeight);
    std::vector<float> row(static_cast<std::size_t>(sizes.toWidth) * 4);
    // The library repeats what is at the edge where this filter leaves it out.
    const int margin = 2 + sizes.toWidth / sizes.fromWidth;

    for (int channel = 0; channel < 3; ++channel) {
        const std::vector<float> expected =
            scaledByTheLibrary(picture, channel, sizes.toWidth, sizes.toHeight);
        for (int y = margin; y < sizes.toHeight - margin; ++y) {
            sut.makeRow(picture, y, row.data());
            for (int x = margin; x < sizes.toWidth - margin; ++x) {
                ASSERT_NEAR(row[static_cast<std::size_t>(x * 4 + channel)],
                            expected[static_cast<std::size_t>(y * sizes.toWidth + x)], 2e-4)
                    << x << ", " << y;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, RowResamplerOfAnySizes,
                         testing::Values(Sizes{64, 36, 128, 72}, Sizes{128, 72, 64, 36},
                                         Sizes{100, 50, 73, 61}, Sizes{73, 61, 100, 50},
                                         Sizes{64, 64, 64, 32}));

TEST(RowResampler, AnEvenPictureStaysEven) {
    Picture picture;
    picture.reset(31, 17, 3);
    for (int channel = 0; channel < 3; ++channel) {
        for (int y = 0; y < 17; ++y) {
            std::fill_n(picture.row(channel, y), 31, 0.25F * static_cast<float>(channel + 1));
        }
    }
    RowResampler sut = stretched(31, 17, 50, 40);
    std::vector<float> row(50 * 4);

    for (int y = 0; y < 40; ++y) {
        sut.makeRow(picture, y, row.data());
        for (int x = 0; x < 50; ++x) {
            for (int channel = 0; channel < 3; ++channel) {
                ASSERT_NEAR(row[static_cast<std::size_t>(x * 4 + channel)], 0.25 * (channel + 1), 1e-6);
            }
        }
    }
}

}  // namespace
}  // namespace Corvel
