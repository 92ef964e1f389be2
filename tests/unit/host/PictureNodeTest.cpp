#include "host/render/PictureNode.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "host/images/CodeTables.h"

namespace Corvel {
namespace {

using namespace Kex::Image;

class QuietApplication : public Application {
public:
    void error(const Op&, const std::string&) override {}
    void warning(const Op&, const std::string&) override {}
    void progress(const Op&, double) override {}
    bool aborted(const Op&) override { return false; }
};

class PictureNodeTest : public testing::Test {
protected:
    // Sample of channel c at column x of row y from the top: 100 c + 10 y + x.
    void makePicture(int width, int height, int channels) {
        picture.reset(width, height, channels);
        for (int c = 0; c < channels; ++c) {
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    picture.row(c, y)[x] = static_cast<float>(100 * c + 10 * y + x);
                }
            }
        }
        sut.show(&picture);
    }

    // The same of halves: 1, 2, 3, … as their bits, row by row.
    void makeHalves(int width, int height) {
        constexpr Picture::Code bits[] = {0x3c00, 0x4000, 0x4200, 0x4400, 0x4500, 0x4600};
        picture.allowCodes(true);
        picture.resetCodes(width, height, 3, halfFloats());
        for (int c = 0; c < 3; ++c) {
            std::copy_n(bits, width * height, picture.codeRow(c, 0));
        }
        sut.show(&picture);
    }

    std::vector<float> get(int y, int x, int r, Kex::Image::Channel channel) {
        Row row(x, r);
        sut.get(y, x, r, Mask_RGBA, row);
        return {row[channel], row[channel] + (r - x)};
    }

    QuietApplication application;
    PictureNode sut{application};
    Picture picture;
};

using Samples = std::vector<float>;

TEST_F(PictureNodeTest, NumbersRowsFromTheBottom) {
    makePicture(3, 2, 4);
    EXPECT_EQ(get(0, 0, 3, Chan_Red), (Samples{10, 11, 12}));
    EXPECT_EQ(get(1, 0, 3, Chan_Red), (Samples{0, 1, 2}));
    EXPECT_EQ(get(1, 0, 3, Chan_Alpha), (Samples{300, 301, 302}));
}

TEST_F(PictureNodeTest, RefersToThePictureInsteadOfCopying) {
    makePicture(3, 2, 3);
    Row row(0, 3);
    sut.get(1, 0, 3, Mask_RGB, row);
    EXPECT_EQ(row[Chan_Green], picture.row(1, 0));
}

TEST_F(PictureNodeTest, FillsTheAlphaOfAPictureWithoutItOnceForAllRows) {
    makePicture(5, 2, 3);
    makePicture(3, 2, 3);
    Row upper(0, 3);
    Row lower(1, 3);
    sut.get(1, 0, 3, Mask_RGBA, upper);
    sut.get(0, 1, 3, Mask_RGBA, lower);
    EXPECT_EQ(upper[Chan_Alpha], lower[Chan_Alpha]);
    EXPECT_EQ(Samples(upper[Chan_Alpha], upper[Chan_Alpha] + 3), (Samples{1, 1, 1}));
}

TEST_F(PictureNodeTest, GivesColumnsFromTheMiddle) {
    makePicture(4, 1, 3);
    EXPECT_EQ(get(0, 1, 3, Chan_Blue), (Samples{201, 202}));
}

TEST_F(PictureNodeTest, GivesHalvesAsFloats) {
    makeHalves(3, 2);
    EXPECT_EQ(get(1, 0, 3, Chan_Green), (Samples{1, 2, 3}));
    EXPECT_EQ(get(0, 0, 3, Chan_Blue), (Samples{4, 5, 6}));
    EXPECT_EQ(get(0, 1, 4, Chan_Red), (Samples{5, 6, 0}));
    EXPECT_EQ(get(0, -1, 3, Chan_Alpha), (Samples{0, 1, 1, 1}));
    EXPECT_EQ(get(2, 0, 1, Chan_Red), (Samples{0}));
}

TEST_F(PictureNodeTest, RefersToCodesInsteadOfLookingThemUp) {
    makeHalves(3, 2);
    Row row(0, 3);
    sut.get(1, 0, 3, Mask_RGBA, row);
    EXPECT_EQ(row.samples(Chan_Green).codes(), picture.codeRow(1, 0));
    EXPECT_EQ(row.samples(Chan_Green).table(), &halfFloats());
    EXPECT_EQ(row.samples(Chan_Alpha).table(), nullptr);
}

TEST_F(PictureNodeTest, IsOpaqueWhereThePictureHasNoAlpha) {
    makePicture(2, 1, 3);
    EXPECT_EQ(get(0, 0, 2, Chan_Alpha), (Samples{1, 1}));
}

TEST_F(PictureNodeTest, IsTransparentBlackWhereThePictureDoesNotReach) {
    makePicture(2, 1, 3);
    EXPECT_EQ(get(0, -1, 4, Chan_Green), (Samples{0, 100, 101, 0, 0}));
    EXPECT_EQ(get(0, -1, 4, Chan_Alpha), (Samples{0, 1, 1, 0, 0}));
    EXPECT_EQ(get(1, 0, 2, Chan_Green), (Samples{0, 0}));
    EXPECT_EQ(get(1, 0, 2, Chan_Alpha), (Samples{0, 0}));
    EXPECT_EQ(get(-1, 0, 2, Chan_Red), (Samples{0, 0}));
    EXPECT_EQ(get(0, 5, 7, Chan_Red), (Samples{0, 0}));
    EXPECT_EQ(get(0, -7, -5, Chan_Red), (Samples{0, 0}));
}

TEST_F(PictureNodeTest, IsTransparentBlackWithoutAPicture) {
    sut.show(nullptr);
    EXPECT_EQ(get(0, 0, 2, Chan_Red), (Samples{0, 0}));
    EXPECT_EQ(get(0, 0, 2, Chan_Alpha), (Samples{0, 0}));
}

TEST_F(PictureNodeTest, LeavesChannelsAloneThatAreNotAskedFor) {
    makePicture(1, 1, 4);
    Row row(0, 1);
    row.fill(Chan_Red, 7);
    sut.get(0, 0, 1, Mask_Alpha, row);
    EXPECT_EQ(row[Chan_Red][0], 7);
}

TEST_F(PictureNodeTest, GivesAllMetadataOrOneKey) {
    MetaData::Bundle bundle;
    bundle.setData("input/timecode", "01:00:00:00");
    bundle.setData("quicktime/reel", "A001");
    sut.setMetaData(bundle);
    EXPECT_EQ(sut.fetchMetaData("").getData("quicktime/reel")->text(), "A001");
    EXPECT_EQ(sut.fetchMetaData(nullptr).getData("input/timecode")->text(), "01:00:00:00");
    EXPECT_EQ(sut.fetchMetaData("quicktime/reel").getData("input/timecode"), nullptr);
    EXPECT_TRUE(sut.fetchMetaData("nothing").empty());
}

}  // namespace
}  // namespace Corvel
