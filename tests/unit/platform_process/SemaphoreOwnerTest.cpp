#include "platform/SemaphoreOwner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <semaphore.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>

namespace Morvane::Platform {
namespace {

/// Runs `body` in a child process and answers whether it returned true.
bool trueInChild(const std::function<bool()>& body) {
    const pid_t child = fork();
    if (child == 0)
        _exit(body() ? 0 : 1);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class SemaphoreOwnerTest : public ::testing::Test {
protected:
    void SetUp() override {
        sem_unlink(("/" + name).c_str());
        semaphore = sem_open(("/" + name).c_str(), O_CREAT | O_EXCL, 0600, 0);
        ASSERT_NE(semaphore, SEM_FAILED);
    }
    void TearDown() override {
        sem_close(semaphore);
        sem_unlink(("/" + name).c_str());
    }

    const std::string name = "owner-test-" + std::to_string(getpid());
    sem_t* semaphore = SEM_FAILED;
};

TEST_F(SemaphoreOwnerTest, IsTheParentThatHasTheSemaphoreOpen) {
    const pid_t self = getpid();

    EXPECT_TRUE(trueInChild([&] { return ancestorWithSemaphore(name) == self; }));
}

TEST_F(SemaphoreOwnerTest, IsFoundBehindAParentThatHasItNot) {
    const pid_t self = getpid();

    EXPECT_TRUE(trueInChild([&] {
        sem_close(semaphore);
        return trueInChild([&] { return ancestorWithSemaphore(name) == self; });
    }));
}

TEST_F(SemaphoreOwnerTest, IsNobodyWhenNoAncestorHasItOpen) {
    EXPECT_TRUE(trueInChild([&] { return ancestorWithSemaphore(name + "x") == 0; }));
}

}  // namespace
}  // namespace Morvane::Platform
