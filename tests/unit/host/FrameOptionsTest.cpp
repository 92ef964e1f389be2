#include "host/app/FrameOptions.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

FrameOrder parsed(const std::string& options) {
    CLI::App app;
    FrameOrder order;
    declareOrderOptions(app, order);
    app.parse(options);
    return order;
}

TEST(FrameOptions, OneNumberOfHandlesIsForBothEnds) {
    EXPECT_EQ(parsed("--handles 8"), (FrameOrder{.before = 8, .after = 8}));
    EXPECT_EQ(parsed("--handles 8,4"), (FrameOrder{.before = 8, .after = 4}));
    EXPECT_EQ(parsed("--handles=-8"), (FrameOrder{.before = -8, .after = -8}));
    EXPECT_EQ(parsed("--handles=0,-2"), (FrameOrder{.before = 0, .after = -2}));
}

TEST(FrameOptions, SayStepHoldAndReverse) {
    EXPECT_EQ(parsed("--step 2 --hold 3 --reverse"), (FrameOrder{.step = 2, .reverse = true, .hold = 3}));
}

TEST(FrameOptions, RefuseWhatIsNoNumberOfFrames) {
    for (const char* bad : {"--handles x", "--handles 1,2,3", "--handles 1,", "--handles 99999999",
                            "--step 0", "--hold 0", "--step -1"}) {
        EXPECT_THROW(parsed(bad), CLI::ParseError) << bad;
    }
}

}  // namespace
}  // namespace Corvel
