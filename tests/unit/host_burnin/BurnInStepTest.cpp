#include "host/burnin/BurnInStep.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "host/burnin/FieldNames.h"

namespace Corvel {
namespace {

const PictureHeader header;

Picture grey(int width, int height) {
    Picture picture;
    picture.reset(width, height, 3);
    std::fill_n(picture.row(0, 0), picture.planeStride() * 3, 0.5F);
    return picture;
}

// The part of the picture that is no longer grey.
Window painted(const Picture& picture) {
    int left = picture.width(), top = picture.height(), right = 0, bottom = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.row(0, y)[x] != 0.5F) {
                left = std::min(left, x);
                right = std::max(right, x + 1);
                top = std::min(top, y);
                bottom = std::max(bottom, y + 1);
            }
        }
    }
    return {left, top, right - left, bottom - top};
}

class BurnIns : public testing::Test {
protected:
    Picture burned(const std::vector<std::string>& texts, int width, int height) {
        BurnInTemplate burnIn;
        for (const std::string& text : texts) {
            burnIn.labels.push_back(labelFrom(text, fieldNames()));
        }
        Picture picture = grey(width, height);
        makeBurnInStep(burnIn, context, false)->apply({7, 0, header}, picture);
        return picture;
    }

    BurnInContext context{{},
                          1,
                          [](const FrameUnderWay& frame, const std::string& field, const std::string&) {
                              return field == "frame" ? FieldValue(std::int64_t{frame.number})
                                                      : FieldValue("");
                          },
                          std::make_shared<FontFaults>()};
};

TEST_F(BurnIns, StandAtTheirNinePlaces) {
    const char* names[] = {"top-left", "top-center",  "top-right",     "left",        "center",
                           "right",    "bottom-left", "bottom-center", "bottom-right"};
    for (int place = 0; place < 9; ++place) {
        const Window box = painted(burned({std::string(names[place]) + "=text"}, 640, 360));
        const int column = place % 3, row = place / 3;
        EXPECT_EQ(box.x < 100, column == 0) << names[place];
        EXPECT_EQ(box.x + box.width > 540, column == 2) << names[place];
        EXPECT_EQ(box.y < 50, row == 0) << names[place];
        EXPECT_EQ(box.y + box.height > 310, row == 2) << names[place];
    }
}

TEST_F(BurnIns, AreAsLargeAsThePictureAsksFor) {
    const Window small = painted(burned({"center=text"}, 854, 480));
    const Window large = painted(burned({"center=text"}, 3840, 2160));
    EXPECT_NEAR(large.height, small.height * 4.5, 6);
    const Window tall = painted(burned({"center=text"}, 480, 854));
    EXPECT_LT(tall.height, small.height) << "of a narrow picture it is the width that counts";
}

TEST_F(BurnIns, StayReadableInSmallPictures) {
    EXPECT_GE(painted(burned({"center=text"}, 160, 90)).height, 9);
}

TEST_F(BurnIns, SeveralAtOnePlaceStandBelowEachOther) {
    const Window one = painted(burned({"bottom-left=text"}, 640, 360));
    const Window two = painted(burned({"bottom-left=text", "bottom-left=text"}, 640, 360));
    EXPECT_EQ(two.height, 2 * one.height);
    EXPECT_EQ(two.y + two.height, one.y + one.height);
}

TEST_F(BurnIns, NeighboursDoNotCoverEachOther) {
    const std::string longText(300, 'x');
    const Picture sut = burned({"bottom-left=" + longText, "bottom-right=" + longText}, 640, 360);
    const int y = 350 - 360 * 3 / 100;
    EXPECT_EQ(sut.row(0, y)[320], 0.5F) << "there is a gap between them";
}

TEST_F(BurnIns, ALabelWithoutAnythingToSayIsLeftOut) {
    EXPECT_LE(painted(burned({"center={note}"}, 640, 360)).width, 0);
}

TEST_F(BurnIns, FollowTheFrame) {
    BurnInTemplate burnIn;
    burnIn.labels.push_back(labelFrom("center={frame}", fieldNames()));
    const auto sut = makeBurnInStep(burnIn, context, true);
    Picture first = grey(320, 180), second = grey(320, 180), again = grey(320, 180);
    sut->apply({1, 0, header}, first);
    EXPECT_LE(painted(first).width, 0) << "the first one is a slate";
    sut->apply({11, 1, header}, first);
    sut->apply({77, 2, header}, second);
    sut->apply({11, 3, header}, again);
    const auto same = [](const Picture& a, const Picture& b) {
        return std::equal(a.row(0, 0), a.row(0, 0) + a.planeStride(), b.row(0, 0));
    };
    EXPECT_FALSE(same(first, second));
    EXPECT_TRUE(same(first, again));
}

}  // namespace
}  // namespace Corvel
