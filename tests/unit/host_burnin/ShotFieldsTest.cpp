#include "host/render/ShotFields.h"

#include <gtest/gtest.h>

#include "tests/unit/host/FakeSource.h"

namespace Corvel {
namespace {

class Fields : public testing::Test {
protected:
    Fields() {
        request.input = "shots/sh010_comp.####.exr";
        request.output = "out.png";
        plan.source = std::make_unique<FakeSource>(std::vector<int>{5, 6, 7});
        plan.frames = {{1, 7, 7}, {2, std::nullopt, 6}, {3, 5, 5}};
        plan.format = {1920, 1080, 1};
        plan.metadata = {{"input/timecode", "01:00:00:23"}, {"input/frame_rate", "24"}};
        header.attributes = {{"owner", "somebody"}};
    }

    FieldValue value(std::size_t position, const std::string& field, const std::string& argument = "") const {
        return ShotFields(request, plan, nullptr)
            .valueOf({static_cast<int>(position) + 1, position, header}, field, argument);
    }

    RenderRequest request;
    RenderPlan plan;
    PictureHeader header;
};

TEST_F(Fields, SayWhichFrameOfTheInputIsShown) {
    EXPECT_EQ(value(0, "frame"), FieldValue(std::int64_t{7}));
    EXPECT_EQ(value(0, "file"), FieldValue("frame7"));
    EXPECT_EQ(value(1, "frame"), FieldValue(std::int64_t{6})) << "also of one that is missing";
    EXPECT_EQ(value(1, "file"), FieldValue(""));
    EXPECT_EQ(value(0, "first"), FieldValue(std::int64_t{5}));
    EXPECT_EQ(value(0, "last"), FieldValue(std::int64_t{7}));
}

TEST_F(Fields, CountTheTimeCodeAsTheMovieDoes) {
    EXPECT_EQ(value(0, "timecode"), FieldValue("01:00:00:23"));
    EXPECT_EQ(value(1, "timecode"), FieldValue("01:00:01:00"));
    plan.timecodeLead = 1;
    EXPECT_EQ(value(1, "timecode"), FieldValue("01:00:00:23"));
    plan.metadata.clear();
    EXPECT_EQ(value(1, "timecode"), FieldValue(""));
}

TEST_F(Fields, TakeMetadataFromTheFrameFirst) {
    EXPECT_EQ(value(0, "meta", "owner"), FieldValue("somebody"));
    EXPECT_EQ(value(0, "meta", "input/frame_rate"), FieldValue("24"));
    EXPECT_EQ(value(0, "meta", "nothing"), FieldValue(""));
}

TEST_F(Fields, WhatThePersonSaysGoesFirst) {
    EXPECT_EQ(value(0, "shot"), FieldValue("sh010_comp"));
    request.burnIns.fields = {{"shot", "020"}, {"mine", "x"}};
    EXPECT_EQ(value(0, "shot"), FieldValue("020"));
    EXPECT_EQ(value(0, "mine"), FieldValue("x"));
}

TEST(ShotName, IsTheInputsWithoutNumberAndEnding) {
    EXPECT_EQ(shotNameOf("a/sh010.####.exr"), "sh010");
    EXPECT_EQ(shotNameOf("sh010_v02.%04d.exr"), "sh010_v02");
    EXPECT_EQ(shotNameOf("sh_@@@.dpx"), "sh");
    EXPECT_EQ(shotNameOf("still.png"), "still");
    EXPECT_EQ(shotNameOf("1001.exr"), "1001");
    EXPECT_EQ(shotNameOf("movie.mov"), "movie");
}

}  // namespace
}  // namespace Corvel
