#include "platform/Descriptors.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Morvane::Platform {
namespace {

TEST(DescriptorsTest, ClosesWhatComesFromTheFirstOnAndNothingBefore) {
    const pid_t child = fork();
    if (child == 0) {
        dup2(0, 40);
        dup2(0, 900);
        closeDescriptorsFrom(40);
        const bool kept = fcntl(0, F_GETFD) != -1 && fcntl(2, F_GETFD) != -1;
        const bool closed = fcntl(40, F_GETFD) == -1 && fcntl(900, F_GETFD) == -1;
        _exit(kept && closed ? 0 : 1);
    }

    int status = 0;
    waitpid(child, &status, 0);

    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace Morvane::Platform
