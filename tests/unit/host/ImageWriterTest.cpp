#include "host/images/ImageWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "TemporaryFolder.h"
#include "host/images/ImageReader.h"

namespace Corvel {
namespace {

class ImageWriterTest : public testing::Test {
protected:
    ImageWriterTest() {
        picture.reset(21, 5, 4);
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 21; ++x) {
                const float alpha = static_cast<float>(x % 5) / 4;
                picture.row(3, y)[x] = alpha;
                for (int channel = 0; channel < 3; ++channel) {
                    picture.row(channel, y)[x] = alpha * static_cast<float>(x + y + channel) / 32;
                }
            }
        }
        header.metadata = {{"input/timecode", "10:11:12:13"},
                           {"quicktime/reel", "A012C003"},
                           {"input/frame_rate", "23.976"}};
        header.pixelAspect = 2;
    }

    // Reads the file again with the host's own reader and compares.
    void expectSame(const std::string& path, float tolerance) {
        Picture again;
        read = createImageReader()->read(path, nullptr, again);
        ASSERT_EQ(again.width(), 21);
        ASSERT_EQ(again.height(), 5);
        ASSERT_EQ(again.channels(), picture.channels());
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 21; ++x) {
                for (int channel = 0; channel < picture.channels(); ++channel) {
                    ASSERT_NEAR(again.row(channel, y)[x], picture.row(channel, y)[x], tolerance)
                        << path << ": " << x << ", " << y << ", " << channel;
                }
            }
        }
    }

    TemporaryFolder folder;
    Picture picture;
    PictureHeader header;
    PictureHeader read;
};

TEST_F(ImageWriterTest, WritesPicturesThatReadBackTheSame) {
    const std::pair<const char*, float> kinds[] = {
        {"a.exr", 1e-3f}, {"a.dpx", 3e-3f}, {"a.png", 1e-4f}, {"a.tif", 1e-4f}, {"A.TIFF", 1e-4f}};
    for (const auto& [name, tolerance] : kinds) {
        writeImage(folder / name, picture, header);
        expectSame(folder / name, tolerance);
    }
}

TEST_F(ImageWriterTest, WritesPicturesWithoutAlpha) {
    Picture opaque;
    opaque.reset(21, 5, 3);
    for (int channel = 0; channel < 3; ++channel) {
        std::copy_n(picture.row(channel, 0), 21 * 5, opaque.row(channel, 0));
    }
    picture = std::move(opaque);
    for (const char* name : {"a.exr", "a.png", "a.dpx"}) {
        writeImage(folder / name, picture, header);
        expectSame(folder / name, 3e-3f);
        EXPECT_FALSE(read.hasAlpha) << name;
    }
}

TEST_F(ImageWriterTest, CarriesTimeCodeReelRateAndPixelAspect) {
    for (const char* name : {"a.exr", "a.dpx", "a.png"}) {
        writeImage(folder / name, picture, header);
        expectSame(folder / name, 3e-3f);
        EXPECT_EQ(read.metadata["input/timecode"], "10:11:12:13") << name;
        EXPECT_EQ(read.metadata["quicktime/reel"], "A012C003") << name;
    }
    writeImage(folder / "a.exr", picture, header);
    expectSame(folder / "a.exr", 1e-3f);
    EXPECT_EQ(read.metadata["input/frame_rate"], "23.976");
    EXPECT_EQ(read.pixelAspect, 2);
}

TEST_F(ImageWriterTest, CarriesTimeCodesOfManyFramesASecond) {
    header.metadata["input/timecode"] = "10:11:12:47";
    header.metadata["input/frame_rate"] = "47.952";
    for (const char* name : {"a.exr", "a.png"}) {
        writeImage(folder / name, picture, header);
        expectSame(folder / name, 1e-3f);
        EXPECT_EQ(read.metadata["input/timecode"], "10:11:12:47") << name;
    }
    header.metadata["input/timecode"] = "10:11:12:119";
    header.metadata["input/frame_rate"] = "120";
    writeImage(folder / "a.png", picture, header);
    expectSame(folder / "a.png", 1e-3f);
    EXPECT_EQ(read.metadata["input/timecode"], "10:11:12:119");
    // Its header has no room for so many.
    writeImage(folder / "a.exr", picture, header);
    expectSame(folder / "a.exr", 1e-3f);
    EXPECT_EQ(read.metadata.count("input/timecode"), 0U);
}

TEST_F(ImageWriterTest, ReplacesAFileOnlyByAWholeOne) {
    folder.write("a.exr", "something else");
    writeImage(folder / "a.exr", picture, header);
    expectSame(folder / "a.exr", 1e-3f);
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        ++files;
    }
    EXPECT_EQ(files, 1u);
}

TEST_F(ImageWriterTest, NamesAFileThatCannotBeWritten) {
    try {
        writeImage(folder / "missing/a.exr", picture, header);
        FAIL() << "wrote into a folder that is not there";
    } catch (const UnwritableImage& error) {
        EXPECT_NE(std::string(error.what()).find(folder / "missing/a.exr"), std::string::npos)
            << error.what();
    }
}

TEST_F(ImageWriterTest, RefusesAnEndingThatItDoesNotWrite) {
    EXPECT_FALSE(isWritableImageName("a.xyz"));
    EXPECT_THROW(writeImage(folder / "a.xyz", picture, header), UnwritableImage);
}

}  // namespace
}  // namespace Corvel
