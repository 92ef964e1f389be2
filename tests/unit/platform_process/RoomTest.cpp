#include "platform/Room.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Morvane::Platform {
namespace {

/// Whether `question` is answered with yes where `resource` is limited to `limit`. Asked in a process of its
/// own, which the limit ends with.
template <typename Question>
bool answerUnder(decltype(RLIMIT_AS) resource, rlim_t limit, Question question) {
    const pid_t child = fork();
    if (child == 0) {
        const struct rlimit both { limit, limit };
        setrlimit(resource, &both);
        _exit(question() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(RoomTest, DescriptorsAreThereUpToTheLimitAndStayThere) {
    const auto tenMore = [] { return hasRoomForDescriptors(10) && hasRoomForDescriptors(10); };
    EXPECT_TRUE(answerUnder(RLIMIT_NOFILE, 64, tenMore));
    EXPECT_FALSE(answerUnder(RLIMIT_NOFILE, 8, tenMore));
}

TEST(RoomTest, MappingsAreThereUpToTheLimit) {
    const auto aLot = [] { return hasRoomForMappings(std::uint64_t{1} << 30); };
    EXPECT_TRUE(aLot());
    EXPECT_FALSE(answerUnder(RLIMIT_AS, std::uint64_t{1} << 30, aLot));
}

}  // namespace
}  // namespace Morvane::Platform
