#include "worker/encode/FrameQueue.h"

#include <gtest/gtest.h>

#include <thread>

namespace Morvane::Worker {
namespace {

FramePointer frameWith(std::int64_t number) {
    FramePointer frame(av_frame_alloc());
    frame->pts = number;
    return frame;
}

TEST(FrameQueue, FramesComeOutInOrderAndAreNumbered) {
    FrameQueue sut(3);
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(sut.waitForRoom());
        sut.put(frameWith(10 + i));
    }
    sut.end();
    for (int i = 0; i < 3; ++i) {
        const auto entry = sut.take();
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->index, i);
        EXPECT_EQ(entry->frame->pts, 10 + i);
    }
    EXPECT_FALSE(sut.take());
}

TEST(FrameQueue, RoomAppearsWhenAFrameIsTaken) {
    FrameQueue sut(1);
    sut.put(frameWith(0));
    std::thread taker([&] { sut.take(); });
    EXPECT_TRUE(sut.waitForRoom());
    taker.join();
}

TEST(FrameQueue, CloseEndsEveryWaitAndDropsWhatWaits) {
    FrameQueue sut(1);
    sut.put(frameWith(0));
    std::thread waiting([&] { EXPECT_FALSE(sut.waitForRoom()); });
    sut.close();
    waiting.join();
    EXPECT_FALSE(sut.take());
    EXPECT_TRUE(sut.isClosed());
    sut.put(frameWith(1));
    EXPECT_FALSE(sut.take());
}

}  // namespace
}  // namespace Morvane::Worker
