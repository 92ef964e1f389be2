#include "worker/encode/VideoEncoder.h"

#include "tests/unit/worker_encode/Plans.h"
#include "worker/Status.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <future>
#include <set>
#include <thread>

namespace Morvane::Worker {
namespace {

using testing::HasSubstr;

std::string reasonOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const StatusError& error) {
        return error.what();
    }
    return "";
}

class OrderOfPackets : public testing::TestWithParam<const char*> {};

TEST_P(OrderOfPackets, PacketsComeInDecodingOrderOneForEachFrame) {
    constexpr int frames = 60;
    std::vector<std::int64_t> decoding;
    std::set<std::int64_t> showing;
    VideoEncoder sut(planFor(GetParam(), "threads=3"));
    sut.start([&](AVPacket& packet) {
        decoding.push_back(packet.dts);
        showing.insert(packet.pts);
        EXPECT_EQ(packet.duration, 1);
        EXPECT_LE(packet.dts, packet.pts);
    });
    for (int frame = 0; frame < frames; ++frame)
        sut.addFrame(pixelsOf(frame).data());
    sut.finish();
    ASSERT_EQ(decoding.size(), static_cast<std::size_t>(frames));
    for (int i = 1; i < frames; ++i)
        EXPECT_EQ(decoding[i], decoding[i - 1] + 1);
    EXPECT_EQ(showing.size(), static_cast<std::size_t>(frames));
    EXPECT_EQ(*showing.begin(), 0);
    EXPECT_EQ(*showing.rbegin(), frames - 1);
}

INSTANTIATE_TEST_SUITE_P(Codecs, OrderOfPackets,
                         testing::Values("mjpa", "png ", "apch", "rle ", "v210", "avc1", "hvc1", "mp4v"));

/// Fewer frames than an encoder reorders must have sensible times too.
TEST(VideoEncoder, MoviesOfFewFramesHaveTheirTimes) {
    for (const char* type : {"avc1", "hvc1", "mp4v"}) {
        for (int frames = 1; frames < 5; ++frames) {
            std::vector<std::int64_t> times;
            VideoEncoder sut(planFor(type));
            sut.start([&](AVPacket& packet) {
                times.push_back(packet.pts);
                EXPECT_LE(packet.dts, packet.pts) << type;
                EXPECT_GE(packet.dts, -2) << type;
            });
            for (int frame = 0; frame < frames; ++frame)
                sut.addFrame(pixelsOf(frame).data());
            sut.finish();
            std::sort(times.begin(), times.end());
            for (int frame = 0; frame < frames; ++frame)
                EXPECT_EQ(times.at(frame), frame) << type;
        }
    }
}

TEST(VideoEncoder, TimeBaseIsOneFrame) {
    VideoEncoder sut(planFor("rle "));
    EXPECT_EQ(sut.timeBase().num, 1);
    EXPECT_EQ(sut.timeBase().den, 24);
}

TEST(VideoEncoder, FailureComesOutOnceFromTheNextFrame) {
    VideoEncoder sut(planFor("rle ", "threads=1"));
    std::promise<void> failing;
    sut.start([&](AVPacket&) {
        failing.set_value();
        throw StatusError(Status::DiskFull, "cannot write /shots/a.mov: No space left on device");
    });
    const std::vector<float> pixels = pixelsOf(0);
    sut.addFrame(pixels.data());
    failing.get_future().wait();
    std::string first;
    while (first.empty())
        first = reasonOf([&] { sut.addFrame(pixels.data()); });
    EXPECT_THAT(first, HasSubstr("No space left"));
    EXPECT_THAT(reasonOf([&] { sut.addFrame(pixels.data()); }), HasSubstr("no more frames"));
    EXPECT_EQ(reasonOf([&] { sut.finish(); }), "");
}

TEST(VideoEncoder, FailureAfterTheLastFrameComesOutOfFinishOnce) {
    for (const char* type : {"rle ", "avc1"}) {
        VideoEncoder sut(planFor(type));
        sut.start([&](AVPacket&) { throw StatusError(Status::DiskFull, "full"); });
        sut.addFrame(pixelsOf(0).data());
        EXPECT_EQ(reasonOf([&] { sut.finish(); }), "full");
        EXPECT_EQ(reasonOf([&] { sut.finish(); }), "");
    }
}

TEST(VideoEncoder, FramesOutOfOrderAreRefused) {
    VideoEncoder sut(planFor("rle "));
    EXPECT_THAT(reasonOf([&] { sut.addFrame(pixelsOf(0).data()); }),
                HasSubstr("before the encoder was started"));
    sut.start([](AVPacket&) {});
    sut.finish();
    EXPECT_NE(reasonOf([&] { sut.addFrame(pixelsOf(0).data()); }), "");
}

TEST(VideoEncoder, NoFramesGiveNoPackets) {
    for (const char* type : {"png ", "avc1", "hvc1", "mp4v"}) {
        int packets = 0;
        VideoEncoder sut(planFor(type));
        sut.start([&](AVPacket&) { ++packets; });
        sut.finish();
        EXPECT_EQ(packets, 0) << type;
    }
}

TEST(VideoEncoder, CanBeDroppedAtAnyPoint) {
    { VideoEncoder sut(planFor("avc1")); }
    for (const char* type : {"png ", "avc1"}) {
        VideoEncoder sut(planFor(type));
        sut.start([](AVPacket&) {});
        for (int frame = 0; frame < 3; ++frame)
            sut.addFrame(pixelsOf(frame).data());
    }
}

/// However slow the disk, only so many pictures and packets are kept.
TEST(VideoEncoder, FramesInFlightAreBounded) {
    constexpr int threads = 2;
    std::atomic<int> delivered = 0;
    VideoEncoder sut(planFor("rle ", "threads=" + std::to_string(threads)));
    sut.start([&](AVPacket&) {
        std::this_thread::yield();
        ++delivered;
    });
    for (int added = 1; added <= 200; ++added) {
        sut.addFrame(pixelsOf(added).data());
        // Waiting pictures, those being encoded, packets waiting with one beyond, and the one being
        // delivered.
        EXPECT_LE(added - delivered, 2 + threads + 2 * threads + 1 + 1);
    }
    sut.finish();
    EXPECT_EQ(delivered, 200);
}

TEST(VideoEncoder, KeyFrameRateIsTheLongestDistanceBetweenKeyFrames) {
    for (const char* type : {"avc1", "hvc1", "mp4v"})
        for (const int rate : {1, 5}) {
            std::vector<std::int64_t> keys;
            VideoEncoder sut(planFor(type, "", 2, rate));
            sut.start([&](AVPacket& packet) {
                if (packet.flags & AV_PKT_FLAG_KEY)
                    keys.push_back(packet.pts);
            });
            for (int frame = 0; frame < 12; ++frame)
                sut.addFrame(pixelsOf(0).data());
            sut.finish();
            keys.push_back(12);
            for (std::size_t i = 1; i < keys.size(); ++i)
                EXPECT_LE(keys[i] - keys[i - 1], rate) << type << " " << rate;
            EXPECT_EQ(keys.front(), 0);
        }
}

TEST(VideoEncoder, EveryPacketOfAnIntraCodecIsAKeyFrame) {
    for (const char* type : {"rle ", "png ", "raw ", "apch", "mjpa", "v210"}) {
        VideoEncoder sut(planFor(type));
        sut.start([&](AVPacket& packet) { EXPECT_TRUE(packet.flags & AV_PKT_FLAG_KEY) << type; });
        for (int frame = 0; frame < 4; ++frame)
            sut.addFrame(pixelsOf(frame / 2).data());
        sut.finish();
    }
}

}  // namespace
}  // namespace Morvane::Worker
