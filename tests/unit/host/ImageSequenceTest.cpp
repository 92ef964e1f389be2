#include "host/images/ImageSequence.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/unit/host/TemporaryFolder.h"
#include "tests/unit/host/TestImages.h"

namespace Corvel {
namespace {

using OIIO::ImageSpec;

std::string reasonFor(const std::string& input) {
    try {
        ImageSequence(input, nullptr);
    } catch (const NoSuchInput& error) {
        return error.what();
    }
    return "";
}

TEST(ImageSequence, HasTheFramesThatHaveFiles) {
    const TemporaryFolder folder;
    for (const char* name : {"a.0003.exr", "a.0001.exr", "a.0002.png"})
        folder.write(name);
    const ImageSequence sut(folder / "a.####.exr", nullptr);
    EXPECT_EQ(sut.frames(), (std::vector<int>{1, 3}));
    EXPECT_TRUE(sut.has(3));
    EXPECT_FALSE(sut.has(2));
    EXPECT_EQ(sut.nameOf(3), folder / "a.0003.exr");
}

TEST(ImageSequence, TakesAStillForAnyFrame) {
    const TemporaryFolder folder;
    folder.write("still.exr");
    const ImageSequence sut(folder / "still.exr", nullptr);
    EXPECT_EQ(sut.frames(), std::vector<int>{1});
    EXPECT_TRUE(sut.has(-99));
    EXPECT_EQ(sut.nameOf(1001), folder / "still.exr");
}

TEST(ImageSequence, TakesAFileWhoseNameLooksLikeAPatternAsAStill) {
    const TemporaryFolder folder;
    folder.write("take#2.exr");
    EXPECT_EQ(ImageSequence(folder / "take#2.exr", nullptr).nameOf(1), folder / "take#2.exr");
}

TEST(ImageSequence, SaysWhatIsMissing) {
    const TemporaryFolder folder;
    EXPECT_NE(reasonFor(folder / "no.exr").find("no.exr"), std::string::npos);
    EXPECT_NE(reasonFor(folder / "no.####.exr").find("no file matches"), std::string::npos);
    EXPECT_NE(reasonFor(folder / "gone/a.####.exr").find("folder"), std::string::npos);
    EXPECT_NE(reasonFor(folder.path()).find("is a folder"), std::string::npos);
}

TEST(ImageSequence, ReadsFramesByNumber) {
    const TemporaryFolder folder;
    for (int frame : {1, 2})
        writeImage(folder / ("a." + std::to_string(frame) + ".exr"), ImageSpec(1, 1, 3, OIIO::TypeHalf),
                   {static_cast<float>(frame), 0, 0});
    const ImageSequence sut(folder / "a.#.exr", nullptr);
    const auto reader = sut.createReader();
    Picture picture;
    reader->read(2, picture);
    EXPECT_EQ(picture.row(0, 0)[0], 2);
    reader->read(1, picture);
    EXPECT_EQ(picture.row(0, 0)[0], 1);
    EXPECT_EQ(sut.header(1).display.width, 1);
}

TEST(ImageSequence, FindsTheFilesOfAView) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "left");
    std::filesystem::create_directory(folder / "right");
    folder.write("left/a_l.0001.exr");
    folder.write("right/a_r.0001.exr");
    folder.write("right/a_r.0002.exr");
    const std::string pattern = folder / "%V/a_%v.####.exr";

    EXPECT_EQ(ImageSequence(pattern, nullptr).frames(), std::vector{1});
    EXPECT_EQ(ImageSequence(pattern, nullptr, {.view = "right"}).frames(), (std::vector{1, 2}));
    EXPECT_EQ(ImageSequence(folder / "%V/a_%v.0001.exr", nullptr, {.view = "right"}).nameOf(1),
              folder / "right/a_r.0001.exr");
}

TEST(ImageSequence, SaysThatTheOtherViewIsThere) {
    const TemporaryFolder folder;
    folder.write("a_right.1.exr");
    const std::string pattern = folder / "a_%V.#.exr";
    for (const std::string view : {"", "left", "center"}) {
        try {
            ImageSequence(pattern, nullptr, {.view = view});
            FAIL() << view;
        } catch (const NoSuchInput& reason) {
            EXPECT_NE(std::string(reason.what()).find("--stereo-view right reads that"), std::string::npos)
                << reason.what();
        }
    }
    EXPECT_THROW(ImageSequence(pattern, nullptr, {.view = "a/b"}), NoSuchInput);
}

}  // namespace
}  // namespace Corvel
