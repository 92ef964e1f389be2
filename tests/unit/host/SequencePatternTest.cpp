#include "host/images/SequencePattern.h"

#include <gtest/gtest.h>

#include "tests/unit/host/TemporaryFolder.h"

namespace Corvel {
namespace {

using Files = std::map<int, std::string>;

TEST(SequencePattern, IsNothingForAPlainName) {
    EXPECT_FALSE(SequencePattern::parse("/shots/a.exr"));
    EXPECT_FALSE(SequencePattern::parse("/shots/####/a.exr")) << "only the file's name holds the number";
    EXPECT_FALSE(SequencePattern::parse("/shots/100%.exr"));
    EXPECT_FALSE(SequencePattern::parse("/shots/100%%d.exr"));
    EXPECT_FALSE(SequencePattern::parse(""));
}

TEST(SequencePattern, PadsAsPrintfDoes) {
    const auto sut = SequencePattern::parse("/shots/a.%04d.exr");
    ASSERT_TRUE(sut);
    EXPECT_EQ(sut->pathOf(7), "/shots/a.0007.exr");
    EXPECT_EQ(sut->pathOf(12345), "/shots/a.12345.exr");
    EXPECT_EQ(sut->pathOf(-7), "/shots/a.-007.exr");
    EXPECT_EQ(sut->folder(), "/shots");
}

TEST(SequencePattern, TakesEachHashOrAtAsOneDigit) {
    EXPECT_EQ(SequencePattern::parse("a.####.exr")->pathOf(7), "a.0007.exr");
    EXPECT_EQ(SequencePattern::parse("a.@@.exr")->pathOf(7), "a.07.exr");
    EXPECT_EQ(SequencePattern::parse("a.#.exr")->pathOf(1234), "a.1234.exr");
    EXPECT_EQ(SequencePattern::parse("a.%d.exr")->pathOf(7), "a.7.exr");
}

TEST(SequencePattern, TakesTheLastOfSeveralMarks) {
    EXPECT_EQ(SequencePattern::parse("take#1.%02d.exr")->pathOf(3), "take#1.03.exr");
    EXPECT_EQ(SequencePattern::parse("a@b.####.exr")->pathOf(3), "a@b.0003.exr");
}

TEST(SequencePattern, ReadsDoublePercentAsOneInThePrintfForm) {
    EXPECT_EQ(SequencePattern::parse("50%%.%03d.exr")->pathOf(3), "50%.003.exr");
}

TEST(SequencePattern, FindsTheFramesThatHaveFiles) {
    const TemporaryFolder folder;
    for (const char* name : {"a.0002.exr", "a.0010.exr", "a.12345.exr", "a.002.exr", "a.02345.exr",
                             "a.0003.png", "b.0004.exr", "a.x.exr", "a..exr", "a.0005.exr~"})
        folder.write(name);

    const auto sut = SequencePattern::parse(folder / "a.####.exr");

    EXPECT_EQ(
        sut->findFiles(),
        (Files{{2, folder / "a.0002.exr"}, {10, folder / "a.0010.exr"}, {12345, folder / "a.12345.exr"}}));
}

TEST(SequencePattern, FindsNegativeFramesWithTheSignInsideOrOutsideOfThePadding) {
    const TemporaryFolder folder;
    folder.write("a.-001.exr");
    folder.write("a.-0002.exr");
    folder.write("a.-0001.exr");

    const auto sut = SequencePattern::parse(folder / "a.%04d.exr");

    EXPECT_EQ(sut->findFiles(), (Files{{-2, folder / "a.-0002.exr"}, {-1, folder / "a.-001.exr"}}));
}

TEST(SequencePattern, FindsNothingInAMissingFolder) {
    EXPECT_TRUE(SequencePattern::parse("/no/such/folder/a.####.exr")->findFiles().empty());
}

}  // namespace
}  // namespace Corvel
