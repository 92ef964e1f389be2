#include "worker/picture/ThreadTeam.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace Morvane::Worker {
namespace {

TEST(ThreadTeam, EveryPartIsDoneOnce) {
    for (const int size : {1, 2, 5}) {
        ThreadTeam sut(size);
        for (const std::size_t parts : {0U, 1U, 2U, 3U, 100U}) {
            std::vector<std::atomic<int>> done(parts);
            sut.share(parts, [&](std::size_t part, int) { ++done[part]; });
            for (const auto& count : done)
                EXPECT_EQ(count, 1);
        }
    }
}

TEST(ThreadTeam, NoMemberWorksOnTwoPartsAtATime) {
    ThreadTeam sut(3);
    std::vector<std::atomic<int>> working(sut.size());
    std::atomic<bool> clash = false;
    for (int round = 0; round < 50; ++round)
        sut.share(20, [&](std::size_t, int member) {
            if (++working[member] != 1)
                clash = true;
            --working[member];
        });
    EXPECT_FALSE(clash);
}

TEST(ThreadTeam, TeamWithoutWorkEnds) {
    const ThreadTeam sut(4);
    EXPECT_EQ(sut.size(), 4);
}

}  // namespace
}  // namespace Morvane::Worker
