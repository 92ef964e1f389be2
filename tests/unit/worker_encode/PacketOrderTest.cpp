#include "worker/encode/PacketOrder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace Morvane::Worker {
namespace {

PacketPointer packetWith(std::int64_t number) {
    PacketPointer packet(av_packet_alloc());
    packet->pts = number;
    return packet;
}

TEST(PacketOrder, PacketsComeOutInOrder) {
    PacketOrder sut(10);
    for (const int index : {2, 0, 3, 1})
        sut.put(index, packetWith(index));
    sut.end();
    for (int expected = 0; expected < 4; ++expected)
        EXPECT_EQ(sut.take()->pts, expected);
    EXPECT_EQ(sut.take(), nullptr);
}

TEST(PacketOrder, ThePacketThatIsDueNeverWaitsForRoom) {
    PacketOrder sut(2);
    sut.put(1, packetWith(1));
    sut.put(2, packetWith(2));
    sut.put(0, packetWith(0));
    EXPECT_EQ(sut.take()->pts, 0);
}

TEST(PacketOrder, BringersWaitForRoom) {
    PacketOrder sut(1);
    std::atomic<bool> brought = false;
    sut.put(1, packetWith(1));
    std::thread bringer([&] {
        sut.put(2, packetWith(2));
        brought = true;
    });
    EXPECT_FALSE(brought);
    sut.put(0, packetWith(0));
    EXPECT_EQ(sut.take()->pts, 0);
    EXPECT_EQ(sut.take()->pts, 1);
    EXPECT_EQ(sut.take()->pts, 2);
    bringer.join();
    EXPECT_TRUE(brought);
}

TEST(PacketOrder, CloseEndsEveryWait) {
    PacketOrder sut(1);
    sut.put(1, packetWith(1));
    std::thread bringer([&] { sut.put(2, packetWith(2)); });
    std::thread taker([&] { EXPECT_EQ(sut.take(), nullptr); });
    sut.close();
    bringer.join();
    taker.join();
}

}  // namespace
}  // namespace Morvane::Worker
