#include "timecode/Timecode.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace Morvane::Timecode;

const FrameRate pal(25, false);
const FrameRate ntsc(30, true);
constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();

std::int64_t parse(const std::string& text, FrameRate rate = pal, Mode mode = Mode::NonDrop) {
    return parseTimecode(text, rate, mode);
}

std::int32_t fieldsOf(const std::string& text) {
    std::int32_t count = 0;
    parseTimecode(text, pal, Mode::NonDrop, 0, &count);
    return count;
}

TEST(ParseTimecode, CountsFramesFromMidnight) {
    EXPECT_EQ(parse("01:00:00:00"), 90000);
    EXPECT_EQ(parse("23:59:59:24"), 24 * 3600 * 25 - 1);
    EXPECT_EQ(parse("00:00:01:00", ntsc), 30);
}

TEST(ParseTimecode, TakesMissingFieldsOnTheLeftForZero) {
    EXPECT_EQ(parse("1:2"), 27);
    EXPECT_EQ(fieldsOf("1:2"), 2);
    EXPECT_EQ(parse("1:0:0"), 1500);
    EXPECT_EQ(fieldsOf("1:0:0"), 3);
}

TEST(ParseTimecode, CountsEmptyFields) {
    EXPECT_EQ(parse("1::2"), 1502);
    EXPECT_EQ(fieldsOf("1::2"), 3);
    EXPECT_EQ(fieldsOf(":"), 2);
    EXPECT_EQ(fieldsOf(":::"), 4);
}

TEST(ParseTimecode, AcceptsBothSeparatorsInBothModes) {
    EXPECT_EQ(parse("01;00:00;00"), 90000);
    EXPECT_EQ(parse("00:10:00;00", ntsc, Mode::Drop), 17980);
    EXPECT_EQ(parse("00;10;00;00", ntsc, Mode::Drop), 17980);
}

TEST(ParseTimecode, ReadsDigitsAloneInPairsFromTheRight) {
    EXPECT_EQ(parse("10000000"), 10 * 3600 * 25);
    EXPECT_EQ(parse("1002"), 252);
    EXPECT_EQ(parse("12"), 12);
    EXPECT_EQ(parse(""), 0);
    EXPECT_EQ(fieldsOf("10000000"), 4);
    EXPECT_EQ(fieldsOf("100"), 2);
    EXPECT_EQ(fieldsOf("0000000000"), 4);
    EXPECT_EQ(fieldsOf(""), 0);
}

TEST(ParseTimecode, RejectsForeignCharacters) {
    EXPECT_EQ(parse("12ab"), invalidTimecode);
    EXPECT_EQ(parse("-00:00:00:05"), invalidTimecode);
    EXPECT_EQ(parse("01:00:00:00 "), invalidTimecode);
    EXPECT_EQ(parse("01.00.00.00"), invalidTimecode);
    EXPECT_EQ(fieldsOf("12ab"), 4);
}

TEST(ParseTimecode, RejectsFieldsOutOfRange) {
    EXPECT_EQ(parse("00:00:00:25"), invalidTimecode);
    EXPECT_EQ(parse("00:61:00:00"), invalidTimecode);
    EXPECT_EQ(parse("00:00:60:00"), invalidTimecode);
    EXPECT_EQ(parse("00:60:00:00", ntsc, Mode::Drop), invalidTimecode);
    EXPECT_EQ(parse("6000"), invalidTimecode);
}

TEST(ParseTimecode, DoesNotCheckHours) {
    EXPECT_EQ(parse("99:00:00:00"), 99 * 90000);
}

TEST(ParseTimecode, GivesZeroForAFifthField) {
    EXPECT_EQ(parse("1:01:00:00:00"), 0);
    EXPECT_EQ(parse("::::"), 0);
    EXPECT_EQ(fieldsOf("1:01:00:00:00"), 4);
}

TEST(ParseTimecode, TakesAZeroRateForOne) {
    EXPECT_EQ(parse("01:00:00:00", FrameRate()), 3600);
    EXPECT_EQ(parse("00:00:00:01", FrameRate()), invalidTimecode);
}

TEST(ParseTimecode, TakesOffTheOffsetInTheTimecodeModes) {
    EXPECT_EQ(parseTimecode("01:00:00:00", pal, Mode::NonDrop, 90000), 0);
    EXPECT_EQ(parseTimecode("00:10:00:00", ntsc, Mode::Drop, 100), 17880);
    EXPECT_EQ(parseTimecode("100", pal, Mode::FrameNumber, 100), 100);
    EXPECT_EQ(parseTimecode("00:00:00:01", pal, Mode::NonDrop, lowest), lowest + 1);
}

// Deliberate: 20 frames for every ten minutes whatever the rate, nothing for the minutes in between.
TEST(ParseTimecode, TakesOffTwentyFramesForTenMinutesInDropMode) {
    EXPECT_EQ(parse("00:09:59:29", ntsc, Mode::Drop), 17999);
    EXPECT_EQ(parse("00:10:00:00", pal, Mode::Drop), 600 * 25 - 20);
    EXPECT_EQ(parse("01:00:00:00", ntsc, Mode::Drop), 108000 - 120);
    EXPECT_EQ(parse("00:01:00:00", ntsc, Mode::Drop), 1800);
}

TEST(ParseTimecode, ReadsFrameNumbers) {
    EXPECT_EQ(parse("  -42x", pal, Mode::FrameNumber), -42);
    EXPECT_EQ(parse("x", pal, Mode::FrameNumber), 0);
}

TEST(ParseTimecode, ReadsFeetAndFrames) {
    EXPECT_EQ(parse("02+20", pal, Mode::Feet40), 100);
    EXPECT_EQ(parse("02+04", pal, Mode::Feet16), 36);
    EXPECT_EQ(parse("2+ 4", pal, Mode::Feet16), 36);
}

TEST(ParseTimecode, GivesZeroUnlessFeetAndFramesAreThere) {
    for (const char* text : {"", "2", "2+", "+", "a+1", "2-4", "2 +4"}) {
        EXPECT_EQ(parse(text, pal, Mode::Feet16), 0) << text;
    }
}

TEST(ParseTimecode, GivesZeroForAModeThatDoesNotExist) {
    EXPECT_EQ(parse("01:00:00:00", pal, static_cast<Mode>(5)), 0);
    EXPECT_EQ(parse("12", pal, static_cast<Mode>(-1)), 0);
}

TEST(ParseTimecode, WrapsEndlessNumbersWithoutTrouble) {
    const std::string digits(50, '9');

    EXPECT_EQ(parse("4294967297:00:00:00"), 90000);
    EXPECT_NE(parse(digits + ":00:00:00", FrameRate(0x7fffffff, false)), invalidTimecode);
    EXPECT_NE(parse(digits + ":00:00:00", FrameRate(0x7fffffff, false), Mode::Drop), invalidTimecode);
    EXPECT_NO_FATAL_FAILURE(parse(digits, pal, Mode::FrameNumber));
    EXPECT_NO_FATAL_FAILURE(parse(digits + "+" + digits, pal, Mode::Feet40));
}

TEST(FramesFromFields, FollowsTheParser) {
    EXPECT_EQ(framesFromFields(pal, false, 1, 0, 0, 0), 90000);
    EXPECT_EQ(framesFromFields(ntsc, true, 0, 10, 0, 0), 17980);
    EXPECT_EQ(framesFromFields(ntsc, false, 0, 10, 0, 0), 18000);
}

TEST(FramesFromFields, DropsNothingWithoutTheFlag) {
    EXPECT_EQ(framesFromFields(pal, true, 0, 10, 0, 0), 15000);
}

TEST(FramesFromFields, WrapsIn32Bits) {
    const auto wrapped = static_cast<std::int32_t>(std::uint32_t{1000000} * 3600 * 30);

    EXPECT_EQ(framesFromFields(FrameRate(30, false), false, 1000000, 0, 0, 0), wrapped);
}

TEST(FormatTimecode, WritesTwoDigitsAField) {
    EXPECT_EQ(formatTimecode(90000, pal, Mode::NonDrop), "01:00:00:00");
    EXPECT_EQ(formatTimecode(0, pal, Mode::NonDrop), "00:00:00:00");
    EXPECT_EQ(formatTimecode(90000, pal, Mode::Drop).find_first_of(':'), std::string::npos);
}

TEST(FormatTimecode, WritesSigns) {
    EXPECT_EQ(formatTimecode(-5, pal, Mode::NonDrop), "-00:00:00:05");
    EXPECT_EQ(formatTimecode(5, pal, Mode::NonDrop, true), "+00:00:00:05");
    EXPECT_EQ(formatTimecode(-5, pal, Mode::NonDrop, true), "-00:00:00:05");
    EXPECT_EQ(formatTimecode(0, pal, Mode::Feet40, true), "+00+00");
}

TEST(FormatTimecode, WrapsHoursAt24) {
    EXPECT_EQ(formatTimecode(25 * 90000, pal, Mode::NonDrop), "01:00:00:00");
}

TEST(FormatTimecode, AddsTheOffsetToTheMagnitude) {
    EXPECT_EQ(formatTimecode(-25, pal, Mode::NonDrop, false, 90000), "-01:00:01:00");
    EXPECT_EQ(formatTimecode(100, pal, Mode::FrameNumber, false, 90000), "100");
    EXPECT_EQ(formatTimecode(100, pal, Mode::Feet40, false, 90000), "02+20");
}

TEST(FormatTimecode, CountsAsDropFrameDoes) {
    EXPECT_EQ(formatTimecode(1799, ntsc, Mode::Drop), "00;00;59;29");
    EXPECT_EQ(formatTimecode(1800, ntsc, Mode::Drop), "00;01;00;02");
    EXPECT_EQ(formatTimecode(17981, ntsc, Mode::Drop), "00;09;59;29");
    EXPECT_EQ(formatTimecode(17982, ntsc, Mode::Drop), "00;10;00;00");
    EXPECT_EQ(formatTimecode(17983, ntsc, Mode::Drop), "00;10;00;01");
    EXPECT_EQ(formatTimecode(107892, ntsc, Mode::Drop), "01;00;00;00");
}

// Deliberate: the 29.97 numbering, whatever the rate.
TEST(FormatTimecode, CountsLike2997InDropModeAtAnyRate) {
    EXPECT_EQ(formatTimecode(1800, pal, Mode::Drop), "00;01;12;02");
}

TEST(FormatTimecode, TakesAZeroRateForOne) {
    EXPECT_EQ(formatTimecode(61, FrameRate(), Mode::NonDrop), "00:01:01:00");
}

TEST(FormatTimecode, WritesFrameNumbersIn32BitsWithoutAPlus) {
    EXPECT_EQ(formatTimecode(-42, pal, Mode::FrameNumber), "-42");
    EXPECT_EQ(formatTimecode(42, pal, Mode::FrameNumber, true), "42");
    EXPECT_EQ(formatTimecode(4294967297, pal, Mode::FrameNumber), "1");
}

TEST(FormatTimecode, WritesFeetAndFrames) {
    EXPECT_EQ(formatTimecode(100, pal, Mode::Feet40), "02+20");
    EXPECT_EQ(formatTimecode(-100, pal, Mode::Feet16), "-06+04");
    EXPECT_EQ(formatTimecode(16000, pal, Mode::Feet16), "1000+00");
}

TEST(FormatTimecode, IsEmptyForAModeThatDoesNotExist) {
    EXPECT_EQ(formatTimecode(1, pal, static_cast<Mode>(5)), "");
}

TEST(FormatTimecode, WrapsTheLargestNumbersWithoutTrouble) {
    for (const std::int64_t frame : {lowest, highest}) {
        for (const std::int64_t offset : {lowest, std::int64_t{0}, highest}) {
            for (std::int32_t mode = 0; mode < 5; ++mode) {
                EXPECT_FALSE(formatTimecode(frame, pal, static_cast<Mode>(mode), true, offset).empty());
            }
        }
    }
}

}  // namespace
