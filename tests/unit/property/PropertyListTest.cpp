#include "property/PropertyList.h"

#include <gtest/gtest.h>

#include <boost/tokenizer.hpp>

namespace {

using namespace Morvane::Property;

/// A property of a type that does not exist.
class Foreign : public Base {
public:
    Foreign() : Base("odd", static_cast<TypeEnum>(9)) {}
    std::unique_ptr<Base> clone() const override { return std::make_unique<Foreign>(); }
    std::uint64_t size() const override { return 1; }
    std::string toString() const override { return "value"; }
    std::string valueToString(std::uint32_t) const override { return "value"; }
};

PropertyList readList(const std::string& text) {
    PropertyList list;
    readPropertyList(text, list);
    return list;
}

std::string rewritten(const PropertyList& list) {
    return writePropertyList(list);
}

PropertyList listOf(std::unique_ptr<Base> property) {
    PropertyList list;
    list.push_back(std::move(property));
    return list;
}

double doubleAfterRoundTrip(double value) {
    auto property = std::make_unique<Double>("d", 1);
    property->values[0] = value;
    const PropertyList list = readList(writePropertyList(listOf(std::move(property))));
    return asDouble(list.front().get(), 1)->values[0];
}

TEST(WritePropertyList, WritesTagNameAndValues) {
    auto property = std::make_unique<Int>("fps", 1);
    property->values[0] = 25;

    EXPECT_EQ(writePropertyList(listOf(std::move(property))), "I:fps:25");
}

TEST(WritePropertyList, WritesAnEmptyListAsAnEmptyText) {
    EXPECT_EQ(writePropertyList({}), "");
}

// Deliberate: what is neither Int nor Double is written as a String.
TEST(WritePropertyList, WritesOtherTypesAsStrings) {
    EXPECT_EQ(writePropertyList(listOf(std::make_unique<Foreign>())), "S:odd:value");
}

TEST(WritePropertyList, KeepsTheOrderOfInsertion) {
    EXPECT_EQ(rewritten(readList("I:b:1:D:a:2:S:c:x")), "I:b:1:D:a:2:S:c:x");
}

TEST(ReadPropertyList, AppendsToWhatTheListHolds) {
    PropertyList sut = readList("I:a:1");

    readPropertyList("S:b:x", sut);

    EXPECT_EQ(rewritten(sut), "I:a:1:S:b:x");
}

TEST(ReadPropertyList, AddsNothingForAnEmptyText) {
    EXPECT_TRUE(readList("").empty());
}

TEST(ReadPropertyList, DropsOneOrTwoFieldsLeftOver) {
    EXPECT_EQ(rewritten(readList("I:a:1:D:b")), "I:a:1");
    EXPECT_EQ(rewritten(readList("I:a:1:D")), "I:a:1");
    EXPECT_TRUE(readList("I:a").empty());
}

TEST(ReadPropertyList, LeavesTheListAloneOnAMalformedEscape) {
    PropertyList sut = readList("I:a:1");

    EXPECT_THROW(readPropertyList("S:b:x:S:c:\\q", sut), boost::escaped_list_error);

    EXPECT_EQ(rewritten(sut), "I:a:1");
}

TEST(ReadPropertyList, GivesBackNamesAndTextsOfAnyKind) {
    auto property = std::make_unique<String>("a:b", 1);
    property->values[0] = "x\"y\\z\n";

    const PropertyList sut = readList(writePropertyList(listOf(std::move(property))));

    ASSERT_EQ(sut.size(), 1u);
    EXPECT_EQ(sut.front()->name, "a:b");
    EXPECT_EQ(asString(sut.front().get(), 1)->values[0], "x\"y\\z\n");
}

TEST(ReadPropertyList, GivesEveryPropertyOneValue) {
    const PropertyList sut = readList("I:sizes:1,2,3:S:names:p,q");

    EXPECT_EQ(asInt(sut.front().get(), 1)->values[0], 1);
    EXPECT_EQ(asString(sut.back().get(), 1)->values[0], "p,q");
}

// Deliberate: doubles are read back as integers.
TEST(ReadPropertyList, CutsDoublesToIntegers) {
    EXPECT_EQ(doubleAfterRoundTrip(0.5), 0.0);
    EXPECT_EQ(doubleAfterRoundTrip(3.75), 3.0);
    EXPECT_EQ(doubleAfterRoundTrip(-2.5), -2.0);
    EXPECT_EQ(doubleAfterRoundTrip(1234567.0), 1.0);
}

TEST(MakeProperty, TakesUnknownTagsForStrings) {
    EXPECT_EQ(makeProperty("Q", "a", "12")->type, TypeString);
    EXPECT_EQ(makeProperty("", "a", "12")->toString(), "12");
}

TEST(MakeProperty, ReadsNumbersAsStreamsDo) {
    EXPECT_EQ(makeProperty("I", "a", "  -7x")->toString(), "-7");
    EXPECT_EQ(makeProperty("D", "a", "2.5")->toString(), "2");
    EXPECT_EQ(makeProperty("I", "a", "99999999999")->toString(), "2147483647");
}

TEST(MakeProperty, TakesZeroForAnUnreadableNumber) {
    EXPECT_EQ(makeProperty("I", "a", "many")->toString(), "0");
    EXPECT_EQ(makeProperty("D", "a", "")->toString(), "0");
}

}  // namespace
