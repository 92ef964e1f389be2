#include "worker/movie/TimecodeMedia.h"

#include "worker/movie/AtomReader.h"

#include <gtest/gtest.h>

namespace Morvane::Worker {
namespace {

TEST(TimecodeMediaTest, OneSampleHoldsTheStartFrame) {
    const TimeScale scale = {24000, 1001};

    EXPECT_EQ(timecodeMedia({24, 86400, ""}, 100, scale), (Bytes{0, 1, 0x51, 0x80}));
    const IndexTrack track = timecodeIndexTrack({24, 86400, ""}, 100, scale, 500);
    EXPECT_EQ(track.samples.sampleCount(), 1);
    EXPECT_EQ(track.samples.duration(), 100 * 1001);
    EXPECT_EQ(track.samples.chunks().at(0).offset, 500);
}

TEST(TimecodeMediaTest, AMovieLongerThanASampleCanBeTakesSeveralThatGoOnCounting) {
    const TimeScale scale = {60000, 1001};
    const std::int64_t longest = INT32_MAX / 1001;
    const std::int64_t frames = 2 * longest + 10;

    const Bytes media = timecodeMedia({60, 7, ""}, frames, scale);
    const IndexTrack track = timecodeIndexTrack({60, 7, ""}, frames, scale, 0);

    ASSERT_EQ(media.size(), 12U);
    AtomCursor starts(media);
    EXPECT_EQ(starts.u32(), 7U);
    EXPECT_EQ(starts.u32(), 7U + longest);
    EXPECT_EQ(starts.u32(), 7U + 2 * longest);
    EXPECT_EQ(track.samples.sampleCount(), 3);
    EXPECT_EQ(track.samples.duration(), frames * 1001);
}

}  // namespace
}  // namespace Morvane::Worker
