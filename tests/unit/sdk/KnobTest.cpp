#include "Kex/Image/Knob.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>

namespace Kex::Image {
namespace {

constexpr const char* sizes[] = {"small", "large", nullptr};

TEST(Knob, HasItsNameAsLabelWhenNoneIsGiven) {
    float field = 0;

    const Knob sut({Knob_Float, Store_Float, &field, "speed", nullptr, nullptr});

    EXPECT_EQ(sut.label(), "speed");
}

TEST(Knob, StoresNumbersInAFloatFieldAndReadsWhatTheNodeWrote) {
    float field = 1;
    Knob sut({Knob_Float, Store_Float, &field, "speed", "Speed", nullptr});

    EXPECT_TRUE(sut.set_value(23.976));
    EXPECT_EQ(field, 23.976F);
    field = 4;

    EXPECT_EQ(sut.get_value(), 4);
    EXPECT_EQ(sut.get_text(), "4");
}

TEST(Knob, CutsNumbersForAWholeFieldTowardsZero) {
    std::int32_t field = 0;
    Knob sut({Knob_Int, Store_Int, &field, "count", "count", nullptr});

    sut.set_value(12.9);
    EXPECT_EQ(field, 12);
    sut.set_value(-12.9);
    EXPECT_EQ(field, -12);
}

TEST(Knob, ClampsNumbersThatAWholeFieldCannotHold) {
    std::int32_t field = 0;
    Knob sut({Knob_Int, Store_Int, &field, "count", "count", nullptr});

    sut.set_value(1e300);
    EXPECT_EQ(field, std::numeric_limits<std::int32_t>::max());
    sut.set_value(-1e300);
    EXPECT_EQ(field, std::numeric_limits<std::int32_t>::min());
    sut.set_value(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(field, 0);
}

TEST(Knob, OfAnEnumerationHoldsTheIndexAndShowsTheEntry) {
    std::int32_t field = 0;
    Knob sut({Knob_Enumeration, Store_Int, &field, "size", "size", sizes});

    sut.set_value(1);
    EXPECT_EQ(field, 1);
    EXPECT_EQ(sut.get_text(), "large");
    EXPECT_EQ(sut.entries(), (std::vector<std::string>{"small", "large"}));
}

TEST(Knob, OfAnEnumerationTakesAnIndexThatHasNoEntry) {
    std::int32_t field = 0;
    Knob sut({Knob_Enumeration, Store_Int, &field, "size", "size", sizes});

    for (const int index : {2, -1}) {
        sut.set_value(index);
        EXPECT_EQ(field, index);
        EXPECT_EQ(sut.get_text(), "");
    }
}

TEST(Knob, OfACheckboxIsOnForAnythingButZero) {
    bool field = false;
    Knob sut({Knob_Checkbox, Store_Bool, &field, "on", "on", nullptr});

    sut.set_value(-0.5);
    EXPECT_TRUE(field);
    EXPECT_EQ(sut.get_text(), "1");
    sut.set_value(0);
    EXPECT_FALSE(field);
    EXPECT_EQ(sut.get_value(), 0);
}

TEST(Knob, OwnsTheTextThatACStringFieldPointsTo) {
    const char* field = nullptr;
    Knob sut({Knob_File, Store_CString, &field, "file", "file", nullptr});
    EXPECT_EQ(sut.get_text(), "");
    std::string text = "/sound/a.wav";

    EXPECT_TRUE(sut.set_text(text));
    text = "changed";

    EXPECT_STREQ(field, "/sound/a.wav");
    sut.set_text("");
    EXPECT_STREQ(field, "");
}

TEST(Knob, WritesTextIntoAStringField) {
    std::string field = "before";
    Knob sut({Knob_Text, Store_String, &field, "text", "text", nullptr});
    EXPECT_EQ(sut.get_text(), "before");

    EXPECT_TRUE(sut.set_text("after"));

    EXPECT_EQ(field, "after");
}

TEST(Knob, RefusesWhatItCannotHold) {
    float number = 3;
    std::string text = "t";
    Knob numberKnob({Knob_Float, Store_Float, &number, "n", "n", nullptr});
    Knob textKnob({Knob_Text, Store_String, &text, "t", "t", nullptr});
    Knob button({Knob_Button, Store_None, nullptr, "b", "b", nullptr});

    EXPECT_FALSE(numberKnob.set_text("4"));
    EXPECT_FALSE(textKnob.set_value(4));
    EXPECT_FALSE(button.set_value(4));
    EXPECT_FALSE(button.set_text("4"));

    EXPECT_EQ(number, 3);
    EXPECT_EQ(text, "t");
    EXPECT_EQ(textKnob.get_value(), 0);
    EXPECT_EQ(button.get_value(), 0);
    EXPECT_EQ(button.get_text(), "");
}

TEST(Knob, HasOneChannel) {
    float field = 3;
    Knob sut({Knob_Float, Store_Float, &field, "n", "n", nullptr});

    EXPECT_FALSE(sut.set_value(9, 1));
    EXPECT_EQ(sut.get_value(1), 0);
    EXPECT_EQ(field, 3);
    EXPECT_TRUE(sut.set_value(9, 0));
    EXPECT_EQ(sut.get_value(-1), 9);
}

TEST(Knob, TakesValuesOutsideOfItsRange) {
    float field = 0;
    Knob sut({Knob_Float, Store_Float, &field, "n", "n", nullptr});
    sut.setRange(0, 10);

    sut.set_value(240);

    EXPECT_EQ(field, 240);
    EXPECT_EQ(sut.range()->second, 10);
}

TEST(Knob, AddsFlagsUp) {
    Knob sut({Knob_Button, Store_None, nullptr, "b", "b", nullptr});

    sut.setFlags(Flag_WholeNumberSlider);
    sut.setFlags(Flag_SetByDialog);

    EXPECT_EQ(sut.flags(), 1028);
}

}  // namespace
}  // namespace Kex::Image
