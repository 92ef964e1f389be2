#include "property/FieldEncoding.h"

#include <gtest/gtest.h>

#include <boost/tokenizer.hpp>
#include <random>

namespace {

using Morvane::Property::escapeField;
using Morvane::Property::joinFields;
using Morvane::Property::parseOpcode;
using Morvane::Property::splitFields;
using Fields = std::deque<std::string>;

std::string errorOfSplitting(const std::string& text) {
    try {
        splitFields(text);
    } catch (const boost::escaped_list_error& error) {
        return error.what();
    }
    return "no error";
}

TEST(EscapeField, LeavesPlainTextAlone) {
    EXPECT_EQ(escapeField("abc"), "abc");
    EXPECT_EQ(escapeField(""), "");
    EXPECT_EQ(escapeField("a,b\nc\t"), "a,b\nc\t");
}

TEST(EscapeField, QuotesTextThatHoldsTheSeparator) {
    EXPECT_EQ(escapeField("a:b"), R"("a:b")");
    EXPECT_EQ(escapeField("a;b", ";"), R"("a;b")");
    EXPECT_EQ(escapeField("a:b", ";"), "a:b");
}

TEST(EscapeField, PutsABackslashBeforeQuotesWithoutQuotingTheText) {
    EXPECT_EQ(escapeField(R"(x"y)"), R"(x\"y)");
}

TEST(EscapeField, DoublesEachBackslashOnce) {
    EXPECT_EQ(escapeField(R"(C:\dir)"), R"("C:\\dir")");
    EXPECT_EQ(escapeField(R"(\\)"), R"(\\\\)");
}

TEST(EscapeField, EscapesBackslashesBeforeQuotes) {
    EXPECT_EQ(escapeField(R"(\")"), R"(\\\")");
    EXPECT_EQ(splitFields(R"(\\\")"), Fields{R"(\")"});
}

TEST(JoinFields, PutsTheSeparatorOnlyBetweenFields) {
    EXPECT_EQ(joinFields({}), "");
    EXPECT_EQ(joinFields({"a"}), "a");
    EXPECT_EQ(joinFields({"a", "", "b:c"}), R"(a::"b:c")");
}

// Deliberate: the quoting looks for ":" whatever the separator is.
TEST(JoinFields, QuotesForColonsWhateverTheSeparator) {
    EXPECT_EQ(joinFields({"a:b", "c;d"}, ";"), R"("a:b";c;d)");
}

TEST(SplitFields, GivesNoFieldsForAnEmptyText) {
    EXPECT_EQ(splitFields(""), Fields{});
}

TEST(SplitFields, GivesAnEmptyFieldAfterATrailingSeparator) {
    EXPECT_EQ(splitFields("a:"), (Fields{"a", ""}));
    EXPECT_EQ(splitFields("::"), (Fields{"", "", ""}));
    EXPECT_EQ(splitFields("a::b"), (Fields{"a", "", "b"}));
}

TEST(SplitFields, GivesAnEmptyFieldAfterATrailingSeparatorOfAnyNumberOfFields) {
    for (std::size_t count = 1; count < 200; ++count) {
        // Leaves memory behind in which a field that is never made would show.
        { const Fields stale(count + 1, "stale"); }
        EXPECT_EQ(splitFields(std::string(count, ':')), Fields(count + 1)) << count;
    }
}

TEST(SplitFields, DropsQuotesAndKeepsSeparatorsBetweenThem) {
    EXPECT_EQ(splitFields(R"(ab"c:d"e)"), Fields{"abc:de"});
    EXPECT_EQ(splitFields(R"("a:b":c)"), (Fields{"a:b", "c"}));
}

TEST(SplitFields, LetsAFieldWithoutClosingQuoteRunToTheEnd) {
    EXPECT_EQ(splitFields(R"(a:"b:c)"), (Fields{"a", "b:c"}));
}

TEST(SplitFields, TakesTheCharacterAfterAnEscape) {
    EXPECT_EQ(splitFields(R"(a\nb)"), Fields{"a\nb"});
    EXPECT_EQ(splitFields(R"(a\\b)"), Fields{R"(a\b)"});
    EXPECT_EQ(splitFields(R"(a\"b)"), Fields{R"(a"b)"});
    EXPECT_EQ(splitFields(R"(a\:b)"), Fields{"a:b"});
}

TEST(SplitFields, KeepsANewlineInsideAField) {
    EXPECT_EQ(splitFields("a\nb:c"), (Fields{"a\nb", "c"}));
}

TEST(SplitFields, SplitsAtTheGivenSeparator) {
    EXPECT_EQ(splitFields("a;b:c", ";"), (Fields{"a", "b:c"}));
}

TEST(SplitFields, RejectsAMalformedEscape) {
    EXPECT_EQ(errorOfSplitting(R"(a\qb)"), "unknown escape sequence");
    EXPECT_EQ(errorOfSplitting(R"(ab\)"), "cannot end with escape");
}

TEST(SplitFields, GivesBackWhatWasJoined) {
    std::mt19937 random(1);
    const std::string alphabet = "ab:\\\"\n,; \x01\xff";
    for (int round = 0; round < 2000; ++round) {
        std::vector<std::string> fields(1 + random() % 5);
        for (std::string& field : fields) {
            for (auto left = random() % 8; left > 0; --left) {
                field += alphabet[random() % alphabet.size()];
            }
        }
        const std::string joined = joinFields(fields);
        // One empty field and no field are the same text.
        const Fields expected = joined.empty() ? Fields{} : Fields(fields.begin(), fields.end());
        EXPECT_EQ(splitFields(joined), expected) << joined;
    }
}

TEST(ParseOpcode, ReadsEightHexadecimalDigitsAfterTheKind) {
    EXPECT_EQ(parseOpcode("W00000014:1"), 20);
    EXPECT_EQ(parseOpcode("R0000000a"), 10);
    EXPECT_EQ(parseOpcode("V0000000B:x"), 11);
    EXPECT_EQ(parseOpcode("W000000012"), 1);
}

TEST(ParseOpcode, StopsAtTheFirstOtherByte) {
    EXPECT_EQ(parseOpcode("W12:34567"), 0x12);
    EXPECT_EQ(parseOpcode("W  1f"), 0x1f);
    EXPECT_EQ(parseOpcode("W5"), 5);
}

TEST(ParseOpcode, ClampsToThirtyTwoSignedBits) {
    EXPECT_EQ(parseOpcode("Wffffffff"), 0x7fffffff);
}

TEST(ParseOpcode, IsMinusOneWithoutADigit) {
    EXPECT_EQ(parseOpcode(""), -1);
    EXPECT_EQ(parseOpcode("W"), -1);
    EXPECT_EQ(parseOpcode("Wxyz"), -1);
    EXPECT_EQ(parseOpcode("W        1"), -1);
}

}  // namespace
