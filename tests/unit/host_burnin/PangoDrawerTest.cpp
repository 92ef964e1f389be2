#include "host/text_library/PangoDrawer.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Corvel {
namespace {

const TextStyle plain{.family = "DejaVu Sans", .size = 20};

int inked(const Coverage& coverage) {
    return static_cast<int>(std::count_if(coverage.samples.begin(), coverage.samples.end(),
                                          [](std::uint8_t sample) { return sample > 127; }));
}

TEST(PangoDrawer, DrawsALineAsHighAsItsFont) {
    const auto sut = makePangoDrawer();
    const Coverage small = sut->draw("mmm", plain).coverage;
    const Coverage tall = sut->draw("Ägf", plain).coverage;
    EXPECT_EQ(small.height, tall.height);
    EXPECT_GE(small.height, 20);
    EXPECT_LE(small.height, 30);
    EXPECT_EQ(small.samples.size(),
              static_cast<std::size_t>(small.width) * static_cast<std::size_t>(small.height));
    EXPECT_GT(inked(small), 50);
}

TEST(PangoDrawer, NothingHasNoWidth) {
    EXPECT_EQ(makePangoDrawer()->draw("", plain).coverage.width, 0);
}

TEST(PangoDrawer, DigitsAreOfOneWidth) {
    const auto sut = makePangoDrawer();
    EXPECT_EQ(sut->draw("1111", plain).coverage.width, sut->draw("8888", plain).coverage.width);
}

TEST(PangoDrawer, WidePixelsMakeNarrowLetters) {
    const auto sut = makePangoDrawer();
    TextStyle wide = plain;
    wide.pixelAspect = 2;
    const Coverage square = sut->draw("corvel", plain).coverage;
    const Coverage squeezed = sut->draw("corvel", wide).coverage;
    EXPECT_NEAR(squeezed.width, square.width / 2.0, 2);
    EXPECT_EQ(squeezed.height, square.height);
}

TEST(PangoDrawer, ALongTextIsShortenedInItsMiddle) {
    const auto sut = makePangoDrawer();
    TextStyle narrow = plain;
    narrow.widest = 100;
    EXPECT_LE(sut->draw(std::string(500, 'x'), narrow).coverage.width, 102);
    EXPECT_GT(sut->draw(std::string(500, 'x'), plain).coverage.width, 1000);
}

TEST(PangoDrawer, DrawsOtherWritingsWithOtherFonts) {
    const auto sut = makePangoDrawer();
    for (const char* text : {"Привет", "Ελλάδα", "שלום"}) {
        const DrawnText drawn = sut->draw(text, plain);
        EXPECT_EQ(drawn.lacking, "") << text;
        EXPECT_GT(inked(drawn.coverage), 50) << text;
    }
}

TEST(PangoDrawer, SaysWhichLettersNoFontHas) {
    const DrawnText drawn = makePangoDrawer()->draw(
        "a\U0010FFFD"
        "b\U0010FFFD",
        plain);
    EXPECT_EQ(drawn.lacking, "\U0010FFFD");
    EXPECT_GT(drawn.coverage.width, 0);
}

TEST(PangoDrawer, SaysWhichFontStandsForOneThatIsNotThere) {
    TextStyle unknown = plain;
    unknown.family = "No Such Family 7";
    EXPECT_NE(makePangoDrawer()->draw("a", unknown).otherFamily, "");
    EXPECT_EQ(makePangoDrawer()->draw("a", plain).otherFamily, "");
    unknown.family = "No Such Family 7, DejaVu Sans";
    EXPECT_EQ(makePangoDrawer()->draw("a", unknown).otherFamily, "") << "any of the list will do";
}

TEST(PangoDrawer, TakesTextsThatAreNone) {
    const auto sut = makePangoDrawer();
    EXPECT_GT(sut->draw("\xff\xfe broken", plain).coverage.width, 0);
    EXPECT_EQ(sut->draw("two\nlines", plain).coverage.height, sut->draw("one", plain).coverage.height);
}

}  // namespace
}  // namespace Corvel
