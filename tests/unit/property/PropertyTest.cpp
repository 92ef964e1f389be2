#include "property/Property.h"

#include <gtest/gtest.h>

#include <cstring>
#include <typeinfo>

namespace {

using namespace Morvane::Property;

/// The place of a virtual operation in its class's table, in the Itanium C++ ABI.
template <typename Operation>
std::size_t slotOf(Operation operation) {
    std::size_t value = 0;
    std::memcpy(&value, &operation, sizeof value);
    return (value - 1) / sizeof(void*);
}

TEST(Property, HoldsAsManyDefaultValuesAsAskedFor) {
    EXPECT_EQ(Int("a", 2).values, (std::vector<std::int32_t>{0, 0}));
    EXPECT_EQ(Double("a", 1).values, std::vector<double>{0.0});
    EXPECT_EQ(String("a", 1).values, std::vector<std::string>{""});
    EXPECT_EQ(Int("a", 0).size(), 0u);
}

TEST(Property, KnowsItsNameTypeAndCount) {
    const String sut("reel", 3);

    EXPECT_EQ(sut.name, "reel");
    EXPECT_EQ(sut.type, TypeString);
    EXPECT_EQ(sut.count, 3u);
    EXPECT_EQ(Int("a", 1).type, 1);
    EXPECT_EQ(Double("a", 1).type, 2);
    EXPECT_EQ(String("a", 1).type, 3);
}

TEST(Property, WritesValuesAsStreamsDo) {
    Int integers("i", 2);
    integers.values = {42, -7};
    Double numbers("d", 4);
    numbers.values = {25.0, 23.976, 1234567.0, 0.0000001};

    EXPECT_EQ(integers.toString(), "42,-7");
    EXPECT_EQ(integers.valueToString(1), "-7");
    EXPECT_EQ(numbers.toString(), "25,23.976,1.23457e+06,1e-07");
}

// Deliberate: a string value with "," cannot be told from two values.
TEST(Property, DoesNotEscapeItsValues) {
    String sut("s", 2);
    sut.values = {"a,b", "c:\"d\\"};

    EXPECT_EQ(sut.toString(), "a,b,c:\"d\\");
    EXPECT_EQ(sut.valueToString(0), "a,b");
}

TEST(Property, IsAnEmptyTextWithoutValues) {
    EXPECT_EQ(Int("a", 0).toString(), "");
}

TEST(Property, CopiesWithAllItsValues) {
    Double original("d", 2);
    original.values = {1.5, 2.5};

    const Double sut(original);

    EXPECT_EQ(sut.name, "d");
    EXPECT_EQ(sut.count, 2u);
    EXPECT_EQ(sut.values, original.values);
}

// Deliberate: a clone is of the template class and not an Int.
TEST(PropertyClone, IsOfTheTemplateClass) {
    const Int original("a", 1);

    const auto sut = original.clone();

    const Base& clone = *sut;
    EXPECT_EQ(typeid(clone), typeid(IntValues));
    EXPECT_EQ(sut->name, "a");
    EXPECT_EQ(sut->type, TypeInt);
}

TEST(PropertyClone, HasAsManyValuesAsTheOriginalWasCreatedWith) {
    Int original("a", 2);
    original.values = {1, 2, 3};
    EXPECT_EQ(original.clone()->toString(), "1,2");

    original.values = {1};
    EXPECT_EQ(original.clone()->toString(), "1,0");
}

TEST(PropertyCast, ChecksTypeAndNumberOfValues) {
    Int sut("a", 1);

    EXPECT_EQ(asInt(&sut, 0), &sut);
    EXPECT_EQ(asInt(&sut, 1), &sut);
    EXPECT_EQ(asInt(&sut, 2), nullptr);
    EXPECT_EQ(asDouble(&sut, 0), nullptr);
    EXPECT_EQ(asString(&sut, 0), nullptr);
}

TEST(PropertyCast, JudgesByTheTypeFieldAndSoReadsClones) {
    Double original("d", 1);
    original.values[0] = 0.5;
    const auto clone = original.clone();

    DoubleValues* sut = asDouble(clone.get(), 1);

    ASSERT_NE(sut, nullptr);
    EXPECT_EQ(sut->values[0], 0.5);
}

TEST(PropertyInterface, KeepsTheOrderOfItsOperations) {
    EXPECT_EQ(slotOf(&Base::clone), 2u);
    EXPECT_EQ(slotOf(&Base::size), 3u);
    EXPECT_EQ(slotOf(&Base::toString), 4u);
    EXPECT_EQ(slotOf(&Base::valueToString), 5u);
}

}  // namespace
