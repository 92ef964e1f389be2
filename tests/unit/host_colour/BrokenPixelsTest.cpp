#include "host/colour/BrokenPixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "host/images/CodeTables.h"
#include "host/render/Log.h"

namespace Corvel {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

class BrokenPixelsTest : public testing::Test, private Reporter {
protected:
    BrokenPixelsTest() {
        logTo(this);
        header.floatingPoint = true;
        picture.reset(5, 2, 4);
        picture.clear();
    }
    ~BrokenPixelsTest() override { logTo(nullptr); }

    void apply(int frame) { makeMendingStep(sut)->apply({frame, 0, header}, picture); }

    const std::shared_ptr<BrokenPixels> sut = std::make_shared<BrokenPixels>();
    PictureHeader header;
    Picture picture;
    std::vector<std::string> messages;

private:
    void message(MessageLevel, const std::string& text) override { messages.push_back(text); }
    void helperLine(const std::string&) override {}
    void start(const RenderStart&) override {}
    void progress(const FrameProgress&, bool) override {}
    void end(const RenderEnd&) override {}
};

TEST_F(BrokenPixelsTest, WritesNoNumberAsZeroAndInfinityAsTheLargestHalf) {
    picture.row(0, 0)[0] = nan;
    picture.row(1, 0)[4] = infinity;
    picture.row(2, 1)[1] = -infinity;
    picture.row(3, 1)[2] = infinity;
    apply(1001);
    EXPECT_EQ(picture.row(0, 0)[0], 0.0F);
    EXPECT_EQ(picture.row(1, 0)[4], 65504.0F);
    EXPECT_EQ(picture.row(2, 1)[1], 0.0F);
    EXPECT_EQ(picture.row(3, 1)[2], 1.0F) << "alpha";
}

TEST_F(BrokenPixelsTest, MendsHalvesLikewise) {
    picture.allowCodes(true);
    picture.resetCodes(3, 2, 4, halfFloats());
    constexpr Picture::Code samples[] = {0x7e01, 0x7c00, 0xfc00, 0xfc01, 0x7bff, 0xb400};
    for (int channel = 0; channel < 4; ++channel) {
        std::copy_n(samples, 6, picture.codeRow(channel, 0));
    }

    apply(1001);

    const auto samplesOf = [&](int channel) {
        const Picture::Code* first = picture.codeRow(channel, 0);
        return std::vector<Picture::Code>(first, first + 6);
    };
    EXPECT_EQ(samplesOf(0), (std::vector<Picture::Code>{0, 0x7bff, 0, 0, 0x7bff, 0xb400}));
    EXPECT_EQ(samplesOf(3), (std::vector<Picture::Code>{0, 0x3c00, 0, 0, 0x7bff, 0xb400})) << "alpha";
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_NE(messages[0].find("8 samples that are not a number"), std::string::npos) << messages[0];
}

TEST_F(BrokenPixelsTest, LeavesNegativeAndHugeValuesAsTheyAre) {
    picture.row(0, 0)[0] = -0.25F;
    picture.row(0, 0)[1] = 1e30F;
    apply(1);
    EXPECT_EQ(picture.row(0, 0)[0], -0.25F);
    EXPECT_EQ(picture.row(0, 0)[1], 1e30F);
    EXPECT_TRUE(messages.empty());
}

TEST_F(BrokenPixelsTest, WarnsOnceAndTellsTheTotalAtTheEnd) {
    for (const int frame : {7, 8, 9}) {
        picture.row(0, 0)[0] = nan;
        picture.row(0, 0)[1] = infinity;
        apply(frame);
    }
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_NE(messages[0].find("frame 7 has 1 samples that are not a number"), std::string::npos)
        << messages[0];
    sut->tellTotal();
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_NE(messages[1].find("3 frames have 3 samples that are not a number"), std::string::npos)
        << messages[1];
    EXPECT_NE(messages[1].find("3 infinite"), std::string::npos) << messages[1];
}

TEST_F(BrokenPixelsTest, TellsNoTotalThatTheWarningHasToldAlready) {
    picture.row(0, 0)[0] = nan;
    apply(1);
    sut->tellTotal();
    EXPECT_EQ(messages.size(), 1U);
}

TEST_F(BrokenPixelsTest, LooksAtNoPictureOfIntegers) {
    header.floatingPoint = false;
    picture.row(0, 0)[0] = nan;
    apply(1);
    EXPECT_TRUE(std::isnan(picture.row(0, 0)[0]));
}

}  // namespace
}  // namespace Corvel
