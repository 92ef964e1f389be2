#include "host/images/ImageSequence.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace Corvel
