#include "worker/movie/SoundMedia.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Morvane::Worker {
namespace {

constexpr std::size_t largestChunk = std::size_t{1} << 24;  // bytes

TEST(SoundTrackWriterTest, NoRateAndNumberOfChannelsMakeAChunkLargerThan16MiB) {
    const SoundFormat format{AV_CODEC_ID_PCM_F64BE, 10'000'000, 64, "64 channels"};
    std::size_t largest = 0;
    std::size_t written = 0;
    SoundTrackWriter sut(format, [&](ByteView media) {
        largest = std::max(largest, media.size());
        const std::size_t place = written;
        written += media.size();
        return static_cast<std::int64_t>(place);
    });

    sut.addSilence(100'000);
    const IndexTrack track = sut.finish();

    EXPECT_LE(largest, largestChunk);
    EXPECT_EQ(written, 100'000U * format.bytesPerFrame());
    EXPECT_EQ(track.samples.sampleCount(), 100'000);
}

}  // namespace
}  // namespace Morvane::Worker
