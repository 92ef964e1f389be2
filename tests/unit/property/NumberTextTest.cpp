#include "property/NumberText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <locale>

namespace {

using Morvane::Property::NumberReader;
using Morvane::Property::numberText;
using Morvane::Property::readNumber;

template <typename T>
T read(const std::string& text, T before) {
    readNumber(text, before);
    return before;
}

/// A locale that groups digits and has a decimal comma, as a host may choose.
struct Grouping : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class HostLocale : public testing::Test {
protected:
    HostLocale() : before(std::locale::global(std::locale(std::locale::classic(), new Grouping))) {}
    ~HostLocale() override { std::locale::global(before); }

    const std::locale before;
};

TEST_F(HostLocale, ChangesNoNumber) {
    EXPECT_EQ(numberText(1234567), "1234567");
    EXPECT_EQ(numberText(23.976f), "23.976");
    EXPECT_EQ(read("1234567", 0), 1234567);
    EXPECT_EQ(read("23.976", 0.0f), 23.976f);
}

TEST(NumberText, HasSixSignificantDigits) {
    EXPECT_EQ(numberText(25.0), "25");
    EXPECT_EQ(numberText(29.97002997), "29.97");
    EXPECT_EQ(numberText(1234567.0), "1.23457e+06");
    EXPECT_EQ(numberText(0.0000001), "1e-07");
}

TEST(ReadNumber, SkipsBlanksAndStopsWhereTheNumberEnds) {
    EXPECT_EQ(read("  12abc", 0), 12);
    EXPECT_EQ(read("-7.9", 0), -7);
    EXPECT_EQ(read("2.5e1x", 0.0f), 25.0f);
}

TEST(ReadNumber, KeepsTheOldValueWhereNothingCanBeRead) {
    EXPECT_EQ(read("abc", 7), 7);
    EXPECT_EQ(read("", 7), 7);
    EXPECT_EQ(read("-", 7), 7);
    EXPECT_EQ(read("nan", 7.5f), 7.5f);
    EXPECT_TRUE(read("yes", true));
}

TEST(ReadNumber, ClampsToTheLimitsOfTheType) {
    EXPECT_EQ(read("99999999999", 7), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(read("-99999999999", 7), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(read("99999999999999999999", std::uint64_t{7}), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(read("1e99", 7.0f), std::numeric_limits<float>::max());
}

TEST(ReadNumber, TakesAnyNumberButZeroForTrue) {
    EXPECT_TRUE(read("1", false));
    EXPECT_TRUE(read("2", false));
    EXPECT_TRUE(read("-1", false));
    EXPECT_FALSE(read("0", true));
}

TEST(ReadNumber, ReadsPointersInHexadecimal) {
    void* const before = reinterpret_cast<void*>(5);
    EXPECT_EQ(read("0x1f", before), reinterpret_cast<void*>(0x1f));
    EXPECT_EQ(read("0", before), nullptr);
    EXPECT_EQ(read("?", before), before);
}

TEST(NumberReader, ReadsOneNumberAfterTheOther) {
    std::int32_t first = 0;
    float second = 0;
    std::int32_t third = 0;

    NumberReader("1920\n 23.976\t3") >> first >> second >> third;

    EXPECT_EQ(first, 1920);
    EXPECT_EQ(second, 23.976f);
    EXPECT_EQ(third, 3);
}

TEST(NumberReader, KeepsAllFieldsFromTheFirstUnreadableOne) {
    std::int32_t first = 0;
    std::int32_t second = -2;
    std::int32_t third = -3;

    NumberReader("1 x 3") >> first >> second >> third;

    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, -2);
    EXPECT_EQ(third, -3);
}

}  // namespace
