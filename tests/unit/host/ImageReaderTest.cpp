#include "host/images/ImageReader.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Kex/Image/LUT.h"
#include "host/images/CodeTables.h"
#include "tests/unit/host/TemporaryFolder.h"
#include "tests/unit/host/TestImages.h"

namespace Corvel {
namespace {

using Kex::Image::LUT;
using OIIO::ImageSpec;

class ImageReaderTest : public testing::Test {
protected:
    std::vector<float> pixel(int x, int y) const {
        std::vector<float> samples;
        for (int channel = 0; channel < picture.channels(); ++channel) {
            samples.push_back(picture.row(channel, y)[x]);
        }
        return samples;
    }

    void expectPixel(int x, int y, const std::vector<float>& expected, float tolerance = 1e-6f) const {
        const std::vector<float> actual = pixel(x, y);
        ASSERT_EQ(actual.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_NEAR(actual[i], expected[i], tolerance) << "pixel " << x << ", " << y << ", channel " << i;
        }
    }

    PictureHeader read(const std::string& name, const LUT* curve = nullptr) {
        return sut->read(folder / name, curve, picture);
    }

    const TemporaryFolder folder;
    const std::unique_ptr<ImageReader> sut = createImageReader();
    Picture picture;
};

TEST_F(ImageReaderTest, ReadsHalfFloatsAsTheyAre) {
    const ImageSpec spec(2, 2, 4, OIIO::TypeHalf);
    writeImage(folder / "a.exr", spec,
               {2.5f, -0.25f, 0, 1, 0, 1, 0, 0.5f,  //
                0, 0, 1, 0.25f, 0.5f, 0.25f, 0.125f, 0});

    const PictureHeader header = read("a.exr");

    EXPECT_EQ(header.display, (Window{0, 0, 2, 2}));
    EXPECT_TRUE(header.hasAlpha);
    EXPECT_TRUE(header.floatingPoint);
    EXPECT_EQ(header.bits, 16);
    expectPixel(0, 0, {2.5f, -0.25f, 0, 1}, 0);
    expectPixel(1, 0, {0, 1, 0, 0.5f}, 0);
    expectPixel(0, 1, {0, 0, 1, 0.25f}, 0);
    expectPixel(1, 1, {0.5f, 0.25f, 0.125f, 0}, 0);
}

TEST_F(ImageReaderTest, KeepsCodesWhereTheyAreAllowedAndHaveOneMeaningEach) {
    writeImage(folder / "half.exr", ImageSpec(2, 1, 3, OIIO::TypeHalf), {2.5f, -0.25f, 0, 1, 0, 1});
    writeImage(folder / "float.exr", ImageSpec(2, 1, 3, OIIO::TypeFloat), {2.5f, -0.25f, 0, 1, 0, 1});
    writeImage(folder / "whole.png", ImageSpec(2, 1, 3, OIIO::TypeUInt8), {1, 1, 0.2f, 0, 0, 0});
    writeImage(folder / "alpha.png", ImageSpec(2, 1, 4, OIIO::TypeUInt8), {1, 1, 1, 1, 0, 0, 0, 0});
    for (const char* name : {"half.exr", "whole.png"}) {
        read(name);
        EXPECT_EQ(picture.table(), nullptr) << name;
    }

    picture.allowCodes(true);
    read("half.exr");
    ASSERT_EQ(picture.table(), &halfFloats());
    EXPECT_EQ(picture.codeRow(0, 0)[0], 0x4100);
    EXPECT_EQ(picture.codeRow(1, 0)[0], 0xb400);
    read("whole.png");
    ASSERT_EQ(picture.table(), &wholeNumbers(255, *LUT::find("srgb")));
    EXPECT_EQ(picture.codeRow(0, 0)[0], 255);
    EXPECT_EQ(picture.codeRow(2, 0)[0], 51);
    read("whole.png", LUT::find("cineon"));
    EXPECT_EQ(picture.table(), &wholeNumbers(255, *LUT::find("cineon")));
    read("half.exr", LUT::getLut(6));
    EXPECT_EQ(picture.table(), nullptr);
    read("float.exr");
    EXPECT_EQ(picture.table(), nullptr);
    read("alpha.png");
    EXPECT_EQ(picture.table(), nullptr);
}

TEST_F(ImageReaderTest, FindsChannelsInAnyOrderAmongOthers) {
    ImageSpec layered(1, 1, 4, OIIO::TypeFloat);
    layered.channelnames = {"beauty.B", "beauty.G", "beauty.R", "depth.Z"};
    writeImage(folder / "b.exr", layered, {0.3f, 0.2f, 0.1f, 9});

    const PictureHeader header = read("b.exr");

    EXPECT_FALSE(header.hasAlpha);
    expectPixel(0, 0, {0.1f, 0.2f, 0.3f}, 0);
}

TEST_F(ImageReaderTest, ReadsGreyAsThreeEqualColours) {
    writeImage(folder / "a.png", ImageSpec(1, 1, 1, OIIO::TypeUInt8), {1});
    read("a.png");
    expectPixel(0, 0, {1, 1, 1});
}

TEST_F(ImageReaderTest, PadsWithTransparentBlackWhereTheFileHasNoPixels) {
    ImageSpec spec(2, 1, 4, OIIO::TypeHalf);
    spec.x = 1;
    spec.y = 2;
    spec.full_width = 4;
    spec.full_height = 4;
    writeImage(folder / "a.exr", spec, {1, 0, 0, 1, 0, 1, 0, 1});

    const PictureHeader header = read("a.exr");

    EXPECT_EQ(header.display, (Window{0, 0, 4, 4}));
    EXPECT_EQ(header.data, (Window{1, 2, 2, 1}));
    ASSERT_EQ(picture.width(), 4);
    ASSERT_EQ(picture.height(), 4);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x) {
            expectPixel(x, y,
                        y == 2 && x == 1   ? std::vector<float>{1, 0, 0, 1}
                        : y == 2 && x == 2 ? std::vector<float>{0, 1, 0, 1}
                                           : std::vector<float>{0, 0, 0, 0},
                        0);
        }
    }
}

TEST_F(ImageReaderTest, PadsAlsoAfterALargerPictureInTheSameMemory) {
    writeImage(folder / "full.exr", ImageSpec(4, 4, 4, OIIO::TypeHalf),
               plainPixels(ImageSpec(4, 4, 4), {1, 1, 1, 1}));
    ImageSpec spec(1, 1, 4, OIIO::TypeHalf);
    spec.full_width = 4;
    spec.full_height = 4;
    writeImage(folder / "part.exr", spec, {1, 1, 1, 1});
    read("full.exr");
    read("part.exr");
    expectPixel(0, 0, {1, 1, 1, 1}, 0);
    expectPixel(3, 3, {0, 0, 0, 0}, 0);
}

TEST_F(ImageReaderTest, CropsPixelsOutsideOfTheDisplayWindow) {
    ImageSpec spec(4, 3, 3, OIIO::TypeFloat);
    spec.x = -1;
    spec.y = -1;
    spec.full_width = 2;
    spec.full_height = 1;
    std::vector<float> samples;
    for (int i = 0; i < 12; ++i) {
        for (int channel = 0; channel < 3; ++channel) {
            samples.push_back(static_cast<float>(10 * i + channel));
        }
    }
    writeImage(folder / "a.exr", spec, samples);

    read("a.exr");

    ASSERT_EQ(picture.width(), 2);
    ASSERT_EQ(picture.height(), 1);
    expectPixel(0, 0, {50, 51, 52}, 0);
    expectPixel(1, 0, {60, 61, 62}, 0);
}

TEST_F(ImageReaderTest, MeasuresFromTheDisplayWindowsOwnOrigin) {
    ImageSpec spec(1, 1, 3, OIIO::TypeHalf);
    spec.x = -5;
    spec.y = 11;
    spec.full_x = -6;
    spec.full_y = 10;
    spec.full_width = 3;
    spec.full_height = 3;
    writeImage(folder / "a.exr", spec, {1, 1, 1});
    read("a.exr");
    expectPixel(1, 1, {1, 1, 1}, 0);
    expectPixel(0, 0, {0, 0, 0}, 0);
}

TEST_F(ImageReaderTest, GivesBlackWhereDataAndDisplayWindowDoNotMeet) {
    ImageSpec spec(2, 2, 3, OIIO::TypeHalf);
    spec.x = 100;
    spec.full_width = 2;
    spec.full_height = 2;
    writeImage(folder / "a.exr", spec, plainPixels(spec, {1, 1, 1}));
    read("a.exr");
    expectPixel(0, 0, {0, 0, 0}, 0);
    expectPixel(1, 1, {0, 0, 0}, 0);
}

TEST_F(ImageReaderTest, TellsThePixelAspect) {
    ImageSpec spec(2, 2, 3, OIIO::TypeHalf);
    spec.attribute("PixelAspectRatio", 2.0f);
    writeImage(folder / "a.exr", spec, plainPixels(spec, {0, 0, 0}));
    EXPECT_DOUBLE_EQ(sut->readHeader(folder / "a.exr").pixelAspect, 2.0);
}

TEST_F(ImageReaderTest, TakesIntegersAsSrgb) {
    writeImage(folder / "a.png", ImageSpec(1, 1, 3, OIIO::TypeUInt8), {1, 128 / 255.0f, 0});
    read("a.png");
    expectPixel(0, 0, {1, static_cast<float>(LUT::find("srgb")->toLinear(128 / 255.0)), 0});
}

TEST_F(ImageReaderTest, ComesBackToThePngsOwnValuesThroughTheCurve) {
    const LUT* srgb = LUT::find("srgb");
    const ImageSpec spec(256, 1, 3, OIIO::TypeUInt16);
    std::vector<float> samples;
    for (int i = 0; i < 256 * 3; ++i) {
        samples.push_back(static_cast<float>(i * 85) / 65535.0f);
    }
    writeImage(folder / "a.png", spec, samples);
    read("a.png");
    std::vector<float> stored(256);
    srgb->toStored(stored.data(), picture.row(1, 0), 256, 1);
    for (int x = 0; x < 256; ++x) {
        EXPECT_EQ(std::lround(stored[static_cast<std::size_t>(x)] * 65535), (x * 3 + 1) * 85);
    }
}

TEST_F(ImageReaderTest, LetsTheCallerOverruleTheCurve) {
    writeImage(folder / "a.png", ImageSpec(1, 1, 3, OIIO::TypeUInt8), {1, 51 / 255.0f, 0});
    read("a.png", LUT::find("linear"));
    expectPixel(0, 0, {1, 0.2f, 0});
}

TEST_F(ImageReaderTest, MultipliesStraightAlphaInLinearLight) {
    ImageSpec spec(1, 1, 4, OIIO::TypeUInt8);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    writeImage(folder / "a.png", spec, {204 / 255.0f, 1, 0, 51 / 255.0f});

    const PictureHeader header = read("a.png");

    EXPECT_TRUE(header.hasAlpha);
    const auto red = static_cast<float>(LUT::find("srgb")->toLinear(204 / 255.0));
    expectPixel(0, 0, {red * 0.2f, 0.2f, 0, 0.2f});
}

TEST_F(ImageReaderTest, KeepsPremultipliedSamplesAsTheyAre) {
    writeImage(folder / "a.tif", ImageSpec(1, 1, 4, OIIO::TypeFloat), {0.25f, 0.5f, 0, 0.5f});
    read("a.tif", LUT::find("linear"));
    expectPixel(0, 0, {0.25f, 0.5f, 0, 0.5f});
}

TEST_F(ImageReaderTest, ReadsTheFirstPartOnly) {
    ImageSpec first(2, 2, 3, OIIO::TypeHalf);
    first.attribute("oiio:subimagename", "left");
    ImageSpec second(5, 5, 3, OIIO::TypeHalf);
    second.attribute("oiio:subimagename", "right");
    second.full_width = second.full_height = 2;
    const std::vector<ImageSpec> parts{first, second};
    const std::string path = folder / "a.exr";
    const auto output = OIIO::ImageOutput::create(path);
    ASSERT_TRUE(output->open(path, 2, parts.data())) << output->geterror();
    ASSERT_TRUE(output->write_image(OIIO::TypeFloat, plainPixels(first, {1, 2, 3}).data()));
    ASSERT_TRUE(output->open(path, second, OIIO::ImageOutput::AppendSubimage));
    ASSERT_TRUE(output->write_image(OIIO::TypeFloat, plainPixels(second, {4, 5, 6}).data()));
    ASSERT_TRUE(output->close());

    read("a.exr");

    EXPECT_EQ(picture.width(), 2);
    expectPixel(1, 1, {1, 2, 3}, 0);
}

TEST_F(ImageReaderTest, ReadsTiledFiles) {
    ImageSpec spec(100, 50, 4, OIIO::TypeHalf);
    spec.tile_width = spec.tile_height = 32;
    const std::vector<float> samples = noisePixels(spec);
    writeImage(folder / "a.exr", spec, samples);
    read("a.exr");
    for (const auto& [x, y] : {std::pair{0, 0}, {31, 31}, {32, 32}, {99, 49}}) {
        const auto first = samples.begin() + (y * 100 + x) * 4;
        expectPixel(x, y, std::vector<float>(first, first + 4), 1e-3f);
    }
}

TEST_F(ImageReaderTest, TurnsPicturesUpright) {
    ImageSpec spec(2, 1, 3, OIIO::TypeUInt8);
    spec.attribute("Orientation", 6);  // a quarter turn clockwise makes it upright
    writeImage(folder / "a.tif", spec, {1, 0, 0, 0, 1, 0});
    const PictureHeader header = read("a.tif");
    EXPECT_EQ(header.display, (Window{0, 0, 1, 2}));
    expectPixel(0, 0, {1, 0, 0});
    expectPixel(0, 1, {0, 1, 0});
}

TEST_F(ImageReaderTest, ReadsLogarithmicDpxByItsHeader) {
    ImageSpec spec(1, 1, 3, OIIO::TypeUInt16);
    spec.attribute("oiio:ColorSpace", "KodakLog");
    spec.attribute("oiio:BitsPerSample", 10);
    writeImage(folder / "a.dpx", spec, {685 / 1023.0f, 95 / 1023.0f, 445 / 1023.0f});
    EXPECT_EQ(read("a.dpx").curve, "cineon");
    const auto middle = static_cast<float>(LUT::find("cineon")->toLinear(445 / 1023.0));
    expectPixel(0, 0, {1, 0, middle}, 2e-3f);
}

TEST_F(ImageReaderTest, CarriesTimeCodeReelAndRate) {
    ImageSpec spec(1, 1, 3, OIIO::TypeHalf);
    const std::uint32_t timecode[2] = {0x01020304, 0};
    const int rate[2] = {25, 1};
    spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, timecode);
    spec.attribute("FramesPerSecond", OIIO::TypeRational, rate);
    spec.attribute("reelName", "A001");
    writeImage(folder / "a.exr", spec, {0, 0, 0});
    EXPECT_EQ(sut->readHeader(folder / "a.exr").metadata, (Metadata{{"input/timecode", "01:02:03:04"},
                                                                    {"quicktime/reel", "A001"},
                                                                    {"input/frame_rate", "25"}}));
}

TEST_F(ImageReaderTest, CarriesTheTimeCodeOfDpx) {
    ImageSpec spec(1, 1, 3, OIIO::TypeUInt16);
    const std::uint32_t timecode[2] = {0x10111213, 0};
    spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, timecode);
    spec.attribute("dpx:InputDevice", "B002");
    writeImage(folder / "a.dpx", spec, {0, 0, 0});
    const Metadata metadata = sut->readHeader(folder / "a.dpx").metadata;
    EXPECT_EQ(metadata.at("input/timecode"), "10:11:12:13");
    EXPECT_EQ(metadata.at("quicktime/reel"), "B002");
}

TEST_F(ImageReaderTest, NamesAMissingFile) {
    try {
        read("missing.exr");
        FAIL();
    } catch (const UnreadableImage& error) {
        EXPECT_NE(std::string(error.what()).find(folder / "missing.exr"), std::string::npos) << error.what();
    }
}

TEST_F(ImageReaderTest, RefusesWhatIsNoImage) {
    folder.write("a.exr", "not an image at all");
    folder.write("b.txt", "neither");
    folder.write("empty.png");
    for (const char* name : {"a.exr", "b.txt", "empty.png"}) {
        EXPECT_THROW(read(name), UnreadableImage) << name;
        EXPECT_THROW(sut->readHeader(folder / name), UnreadableImage) << name;
    }
}

TEST_F(ImageReaderTest, RefusesAPictureOfMoreThanTwoGiB) {
    ImageSpec spec(1, 1, 3, OIIO::TypeHalf);
    spec.full_width = 16384;
    spec.full_height = 16384;
    writeImage(folder / "a.exr", spec, {0, 0, 0});
    try {
        sut->readHeader(folder / "a.exr");
        FAIL();
    } catch (const UnreadableImage& error) {
        EXPECT_NE(std::string(error.what()).find("16384 x 16384"), std::string::npos) << error.what();
    }
}

class CutShort : public ImageReaderTest, public testing::WithParamInterface<const char*> {};

TEST_P(CutShort, IsUnreadable) {
    const std::string name = GetParam();
    const ImageSpec spec(64, 64, 3, OIIO::TypeUInt8);
    writeImage(folder / name, spec, noisePixels(spec));
    ASSERT_NO_THROW(read(name));
    for (const double fraction : {0.9, 0.5}) {
        cutShort(folder / name, fraction);
        try {
            read(name);
            ADD_FAILURE() << "read " << fraction << " of " << name;
        } catch (const UnreadableImage& error) {
            EXPECT_NE(std::string(error.what()).find(folder / name), std::string::npos) << error.what();
            EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << "one line";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(ImageReader, CutShort,
                         testing::Values("a.exr", "a.dpx", "a.png", "a.tif", "a.jpg", "a.tga"));

}  // namespace
}  // namespace Corvel
