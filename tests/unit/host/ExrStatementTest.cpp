#include "host/images/ExrStatement.h"

#include <gtest/gtest.h>

#include <functional>

#include "host/image_library/LibraryReader.h"
#include "host/images/ExrContents.h"
#include "host/images/ExrFile.h"
#include "tests/unit/host/TemporaryFolder.h"
#include "tests/unit/host/TestImages.h"

namespace Corvel {
namespace {

using OIIO::ImageSpec;

// A file of that kind on disk.
std::string writeFile(const TemporaryFolder& folder, const ImageSpec& spec) {
    const std::string path = folder / "a.exr";
    writeImage(path, spec, noisePixels(spec));
    return path;
}

std::optional<ExrStatement> statementOf(const std::string& path, const PictureChoice& choice = {}) {
    const ExrFile file(path);
    if (!file.isOpen()) {
        return std::nullopt;
    }
    const FileContents contents = contentsOf(file);
    return stateOf(file, contents, choosePicture(contents, choice));
}

ImageSpec plain(OIIO::TypeDesc type, int channels = 4) {
    ImageSpec spec(20, 10, channels, type);
    spec.attribute("compression", "zip");
    return spec;
}

struct Kind {
    const char* name;
    std::function<ImageSpec()> spec;
};

class OrdinaryFiles : public testing::TestWithParam<Kind> {
protected:
    const TemporaryFolder folder;
};

TEST_P(OrdinaryFiles, SayTheSameToBothReaders) {
    const std::string path = writeFile(folder, GetParam().spec());

    const std::optional<ExrStatement> statement = statementOf(path);

    ASSERT_TRUE(statement);
    const PictureHeader& actual = statement->header;
    const PictureHeader expected = LibraryReader().readHeader(path);
    EXPECT_EQ(actual.display, expected.display);
    EXPECT_EQ(actual.data, expected.data);
    EXPECT_EQ(actual.pixelAspect, expected.pixelAspect);
    EXPECT_EQ(actual.hasAlpha, expected.hasAlpha);
    EXPECT_EQ(actual.bits, expected.bits);
    EXPECT_EQ(actual.floatingPoint, expected.floatingPoint);
    EXPECT_EQ(actual.curve, expected.curve);
    EXPECT_EQ(actual.metadata, expected.metadata);
}

ImageSpec inWindows() {
    ImageSpec spec = plain(OIIO::TypeHalf);
    spec.x = -3;
    spec.y = 5;
    spec.full_x = 2;
    spec.full_y = -1;
    spec.full_width = 64;
    spec.full_height = 32;
    spec.attribute("PixelAspectRatio", 2.0f);
    return spec;
}

ImageSpec withMetadata() {
    ImageSpec spec = plain(OIIO::TypeHalf);
    const std::uint32_t timecode[2] = {0x01020304 | 1u << 6, 0};
    const int rate[2] = {30000, 1001};
    spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, timecode);
    spec.attribute("FramesPerSecond", OIIO::TypeRational, rate);
    spec.attribute("reelName", "A001_ü");
    return spec;
}

ImageSpec withoutTimeOfDay() {
    ImageSpec spec = plain(OIIO::TypeHalf);
    const std::uint32_t timecode[2] = {0xffffffff, 0};
    const int rate[2] = {24, 0};
    spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, timecode);
    spec.attribute("FramesPerSecond", OIIO::TypeRational, rate);
    return spec;
}

ImageSpec amongOthers() {
    ImageSpec spec = plain(OIIO::TypeHalf, 6);
    spec.channelnames = {"R", "G", "B", "A", "Z", "beauty.R"};
    spec.channelformats.assign(6, OIIO::TypeHalf);
    spec.channelformats[4] = OIIO::TypeFloat;
    return spec;
}

ImageSpec encoded(const char* space) {
    ImageSpec spec = plain(OIIO::TypeFloat, 3);
    spec.attribute("oiio:ColorSpace", space);
    return spec;
}

INSTANTIATE_TEST_SUITE_P(ExrStatement, OrdinaryFiles,
                         testing::Values(Kind{"Halves", [] { return plain(OIIO::TypeHalf); }},
                                         Kind{"Floats", [] { return plain(OIIO::TypeFloat); }},
                                         Kind{"Opaque", [] { return plain(OIIO::TypeHalf, 3); }},
                                         Kind{"Windows", inWindows}, Kind{"Metadata", withMetadata},
                                         Kind{"NoTimeOfDay", withoutTimeOfDay},
                                         Kind{"OtherChannels", amongOthers},
                                         Kind{"StatedSrgb", [] { return encoded("sRGB"); }},
                                         Kind{"StatedLog", [] { return encoded("KodakLog"); }},
                                         Kind{"StatedGamma", [] { return encoded("Gamma2.2"); }}),
                         [](const auto& one) { return one.param.name; });

class ExrStatementTest : public testing::Test {
protected:
    const TemporaryFolder folder;
};

TEST_F(ExrStatementTest, NamesTheChannelsThatWereChosen) {
    using Names = ExrScanlines::ChannelNames;
    ImageSpec grey = plain(OIIO::TypeHalf, 1);
    grey.channelnames = {"Y"};
    EXPECT_EQ(statementOf(writeFile(folder, grey))->channels, (Names{"Y", "Y", "Y", ""}));
    ImageSpec layered = plain(OIIO::TypeHalf, 6);
    layered.channelnames = {"R", "G", "B", "beauty.R", "beauty.G", "beauty.B"};
    EXPECT_EQ(statementOf(writeFile(folder, layered), {.layer = "beauty"})->channels,
              (Names{"beauty.R", "beauty.G", "beauty.B", ""}));
}

TEST_F(ExrStatementTest, LeavesTurnedPicturesToTheGeneralReader) {
    ImageSpec turned = plain(OIIO::TypeHalf);
    turned.attribute("Orientation", 6);
    EXPECT_FALSE(statementOf(writeFile(folder, turned)));
}

TEST_F(ExrStatementTest, LeavesTilesToTheGeneralReader) {
    ImageSpec tiled = plain(OIIO::TypeHalf);
    tiled.tile_width = tiled.tile_height = 16;
    const std::string path = folder / "tiled.exr";
    const auto output = OIIO::ImageOutput::create(path);
    ASSERT_TRUE(output->open(path, tiled));
    ASSERT_TRUE(output->write_image(OIIO::TypeFloat, noisePixels(tiled).data()));
    ASSERT_TRUE(output->close());
    EXPECT_FALSE(statementOf(path));
}

TEST_F(ExrStatementTest, FilesThatAreNoneAreNotOpen) {
    EXPECT_FALSE(ExrFile(folder / "missing.exr").isOpen());
    writeImage(folder / "a.png", ImageSpec(2, 2, 3, OIIO::TypeUInt8), std::vector<float>(12));
    EXPECT_FALSE(ExrFile(folder / "a.png").isOpen());
}

}  // namespace
}  // namespace Corvel
