#include "worker/sound/SampleFormat.h"

#include "worker/Status.h"

#include <gtest/gtest.h>

namespace Morvane::Worker {
namespace {

Status statusOf(const SampleFormat& format) {
    try {
        checkSampleFormat(format);
    } catch (const StatusError& error) {
        return error.status;
    }
    return Status::Success;
}

TEST(SampleFormatTest, TakesTheThreeFormsOfFourBytes) {
    EXPECT_EQ(statusOf({1, true, 48000, ""}), Status::Success);
    EXPECT_EQ(statusOf({1, false, 44100, "mono"}), Status::Success);
    EXPECT_EQ(statusOf({2, false, 192000, "stereo"}), Status::Success);
}

TEST(SampleFormatTest, RefusesOtherChannelCounts) {
    EXPECT_EQ(statusOf({0, false, 48000, ""}), Status::NotSupportedByCodec);
    EXPECT_EQ(statusOf({2, true, 48000, ""}), Status::NotSupportedByCodec);
    EXPECT_EQ(statusOf({6, false, 48000, ""}), Status::NotSupportedByCodec);
    EXPECT_EQ(statusOf({-1, false, 48000, ""}), Status::NotSupportedByCodec);
}

TEST(SampleFormatTest, RefusesRatesOutOfRange) {
    EXPECT_EQ(statusOf({1, true, 0, ""}), Status::NotSupportedByCodec);
    EXPECT_EQ(statusOf({1, true, 192001, ""}), Status::NotSupportedByCodec);
}

TEST(SampleFormatTest, RefusesALayoutThatIsUnknownOrHasOtherChannels) {
    EXPECT_EQ(statusOf({1, true, 48000, "stereo"}), Status::NotSupportedByCodec);
    EXPECT_EQ(statusOf({2, false, 48000, "nonsense"}), Status::NotSupportedByCodec);
}

}  // namespace
}  // namespace Morvane::Worker
