#include "host/burnin/FieldText.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "host/burnin/FieldNames.h"

namespace Corvel {
namespace {

FieldValue lookup(const std::string& field, const std::string& argument) {
    if (field == "frame") {
        return std::int64_t{42};
    }
    if (field == "date") {
        return std::int64_t{1'700'000'000};  // 14 November 2023, 22:13 UTC
    }
    return field == "meta" && argument == "exr:owner" ? "somebody" : field == "show" ? "Orion" : "";
}

std::string written(const std::string& text) {
    return FieldText(text, fieldNames()).textWith(lookup);
}

std::string refusal(const std::string& text) {
    try {
        FieldText(text, fieldNames());
    } catch (const std::invalid_argument& fault) {
        return fault.what();
    }
    return "";
}

TEST(FieldText, PutsValuesIn) {
    EXPECT_EQ(written("plain"), "plain");
    EXPECT_EQ(written("{show}: {frame}"), "Orion: 42");
    EXPECT_EQ(written("{frame:06d}|{show:>7}"), "000042|  Orion");
    EXPECT_EQ(written("{meta:exr:owner}"), "somebody");
    EXPECT_EQ(written("{date:%Y}"), "2023");
    EXPECT_EQ(written("{{{frame}}}"), "{42}");
}

TEST(FieldText, SaysNothingWhereNoFieldHasAValue) {
    EXPECT_EQ(written("note: {note}"), "");
    EXPECT_EQ(written("{note} {show}"), " Orion");
}

TEST(FieldText, RefusesAFieldThatThereIsNot) {
    EXPECT_NE(refusal("a {shoe} b").find("there is no field {shoe}"), std::string::npos)
        << refusal("a {shoe} b");
    EXPECT_NE(refusal("{shoe}").find("shot"), std::string::npos) << "those that there are";
    EXPECT_NE(refusal("{}"), "");
    EXPECT_NE(refusal("{meta}"), "");
}

TEST(FieldText, RefusesBracesWithoutTheirOtherOne) {
    EXPECT_NE(refusal("{frame"), "");
    EXPECT_NE(refusal("frame}"), "");
}

TEST(FieldText, RefusesAFormatThatTheFieldDoesNotTake) {
    EXPECT_NE(refusal("{frame:q}"), "");
    EXPECT_NE(refusal("{show:d}"), "");
    EXPECT_EQ(refusal("{frame:04d}"), "");
}

}  // namespace
}  // namespace Corvel
