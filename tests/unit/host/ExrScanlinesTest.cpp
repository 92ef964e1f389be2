#include "host/images/ExrScanlines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <string>
#include <vector>

#include "TemporaryFolder.h"
#include "TestImages.h"
#include "host/images/CodeTables.h"
#include "host/images/ExrFile.h"
#include "host/images/ExrKernels.h"
#include "host/images/ImageReader.h"

namespace Corvel {
namespace {

const ExrScanlines::ChannelNames rgba{"R", "G", "B", "A"};

// A file of noise, of which two channels are not wanted.
OIIO::ImageSpec specOf(int width, int height, const char* compression) {
    OIIO::ImageSpec spec(width, height, 6, OIIO::TypeHalf);
    spec.channelnames = {"R", "G", "B", "A", "Z", "id"};
    spec.alpha_channel = 3;
    spec.attribute("compression", compression);
    return spec;
}

// What the image library reads from the file: width x height x 6 floats.
std::vector<float> readByLibrary(const std::string& path) {
    const auto input = OIIO::ImageInput::open(path);
    std::vector<float> samples(input->spec().image_pixels() * 6);
    EXPECT_TRUE(input->read_image(0, 0, 0, 6, OIIO::TypeFloat, samples.data())) << input->geterror();
    return samples;
}

struct Kind {
    const char* name;
    const char* compression;
    OIIO::TypeDesc type;
    int width;
    int height;
};

class ExrScanlinesTest : public testing::Test {
protected:
    TemporaryFolder folder;
    ExrScanlines sut;
    Picture picture;
};

class EveryKind : public ExrScanlinesTest, public testing::WithParamInterface<Kind> {
protected:
    // A file of that kind; `between` is what the channel between the wanted ones in the file's own order is.
    std::string noiseFile(OIIO::TypeDesc between) const {
        OIIO::ImageSpec spec = specOf(kind.width, kind.height, kind.compression);
        spec.format = kind.type;
        spec.channelformats.assign(6, kind.type);
        spec.channelformats[4] = between;
        const std::string path = folder / "noise.exr";
        writeImage(path, spec, noisePixels(spec));
        return path;
    }

    const Kind& kind = GetParam();
};

TEST_P(EveryKind, GivesTheSamplesThatTheLibraryGives) {
    const std::string path = noiseFile(OIIO::TypeFloat);
    picture.reset(kind.width, kind.height, 4);

    ASSERT_TRUE(sut.read(ExrFile(path), 0, rgba, {0, 0, kind.width, kind.height}, picture));

    const std::vector<float> expected = readByLibrary(path);
    for (int y = 0; y < kind.height; ++y) {
        for (int x = 0; x < kind.width; ++x) {
            for (int channel = 0; channel < 4; ++channel) {
                const std::size_t at = static_cast<std::size_t>((y * kind.width + x) * 6 + channel);
                ASSERT_EQ(picture.row(channel, y)[x], expected[at]) << x << ", " << y << ", " << channel;
            }
        }
    }
}

TEST_P(EveryKind, LeavesHalvesAsTheyAreInAPictureOfHalves) {
    const std::string path = noiseFile(kind.type);
    const Window display{0, 0, kind.width, kind.height};
    Picture halves;
    halves.allowCodes(true);
    halves.resetCodes(kind.width, kind.height, 4, halfFloats());
    picture.reset(kind.width, kind.height, 4);

    const bool read = sut.read(ExrFile(path), 0, rgba, display, halves);

    ASSERT_EQ(read, kind.type == OIIO::TypeHalf);
    ASSERT_TRUE(sut.read(ExrFile(path), 0, rgba, display, picture));
    const std::size_t samples = read ? 4 * halves.planeStride() : 0;
    std::vector<float> widened(samples);
    widenHalves(halves.codeRow(0, 0), widened.data(), samples);
    EXPECT_TRUE(std::equal(widened.begin(), widened.end(), picture.row(0, 0)));
}

INSTANTIATE_TEST_SUITE_P(ExrScanlines, EveryKind,
                         testing::Values(Kind{"HalfZip", "zip", OIIO::TypeHalf, 67, 35},
                                         Kind{"HalfZips", "zips", OIIO::TypeHalf, 31, 3},
                                         Kind{"HalfStored", "none", OIIO::TypeHalf, 33, 5},
                                         Kind{"FloatZip", "zip", OIIO::TypeFloat, 67, 35},
                                         Kind{"FloatStored", "none", OIIO::TypeFloat, 17, 4},
                                         Kind{"OnePixel", "zip", OIIO::TypeHalf, 1, 1}),
                         [](const auto& one) { return one.param.name; });

TEST_F(ExrScanlinesTest, KeepsInfinitiesNotNumbersAndTheSmallestHalves) {
    const std::string path = folder / "odd.exr";
    const OIIO::ImageSpec spec = specOf(24, 2, "zip");
    std::vector<float> samples = plainPixels(spec, {INFINITY, -INFINITY, NAN, 5.9604645e-8f, -0.0f, 65504});
    writeImage(path, spec, samples);
    picture.reset(24, 2, 4);

    ASSERT_TRUE(sut.read(ExrFile(path), 0, rgba, {0, 0, 24, 2}, picture));

    EXPECT_EQ(picture.row(0, 1)[23], INFINITY);
    EXPECT_EQ(picture.row(1, 1)[23], -INFINITY);
    EXPECT_TRUE(std::isnan(picture.row(2, 1)[23]));
    EXPECT_EQ(picture.row(3, 1)[23], 5.9604645e-8f);
}

TEST_F(ExrScanlinesTest, LeavesSamplesOutsideOfTheFilesPixelsAlone) {
    const std::string path = folder / "part.exr";
    OIIO::ImageSpec spec = specOf(8, 40, "zip");
    spec.x = 10;
    spec.y = 20;
    writeImage(path, spec, plainPixels(spec, {0.5f, 0.25f, 0.125f, 1, 0, 0}));
    picture.reset(12, 30, 4);
    picture.clear();

    ASSERT_TRUE(sut.read(ExrFile(path), 0, rgba, {4, 38, 12, 30}, picture));

    EXPECT_EQ(picture.row(0, 0)[5], 0);
    EXPECT_EQ(picture.row(0, 0)[6], 0.5f);
    EXPECT_EQ(picture.row(1, 21)[11], 0.25f);
    EXPECT_EQ(picture.row(1, 22)[11], 0);
}

TEST_F(ExrScanlinesTest, LeavesOtherKindsToTheGeneralReader) {
    const std::string path = folder / "other.exr";
    picture.reset(32, 32, 4);
    for (const char* compression : {"piz", "rle", "dwaa", "b44"}) {
        const OIIO::ImageSpec spec = specOf(32, 32, compression);
        writeImage(path, spec, noisePixels(spec));
        EXPECT_FALSE(sut.read(ExrFile(path), 0, rgba, {0, 0, 32, 32}, picture)) << compression;
    }
    OIIO::ImageSpec tiled = specOf(32, 32, "zip");
    tiled.tile_width = tiled.tile_height = 16;
    const auto output = OIIO::ImageOutput::create(path);
    ASSERT_TRUE(output->open(path, tiled));
    ASSERT_TRUE(output->write_image(OIIO::TypeFloat, noisePixels(tiled).data()));
    ASSERT_TRUE(output->close());
    EXPECT_FALSE(sut.read(ExrFile(path), 0, rgba, {0, 0, 32, 32}, picture)) << "tiled";
}

TEST_F(ExrScanlinesTest, LeavesFilesWithoutTheWantedChannelsToTheGeneralReader) {
    const std::string path = folder / "noise.exr";
    const OIIO::ImageSpec spec = specOf(16, 16, "zip");
    writeImage(path, spec, noisePixels(spec));
    picture.reset(16, 16, 4);

    EXPECT_FALSE(sut.read(ExrFile(path), 0, {"R", "G", "B", "matte"}, {0, 0, 16, 16}, picture));
}

TEST_F(ExrScanlinesTest, NamesFileAndRowOfADamagedBlock) {
    const std::string path = folder / "damaged.exr";
    OIIO::ImageSpec spec = specOf(64, 64, "zip");
    std::vector<float> samples(spec.image_pixels() * 6);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<float>(i % 97) / 97;
    }
    writeImage(path, spec, samples);
    {
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(-64, std::ios::end);
        file.write(std::string(48, '\x55').data(), 48);
    }
    picture.reset(64, 64, 4);

    try {
        sut.read(ExrFile(path), 0, rgba, {0, 0, 64, 64}, picture);
        FAIL() << "a damaged block was taken for pixels";
    } catch (const UnreadableImage& error) {
        EXPECT_EQ(error.what(),
                  "cannot read " + path +
                      ": the pixels from row 48 on cannot be decompressed; the file is damaged");
    }
}

}  // namespace
}  // namespace Corvel
