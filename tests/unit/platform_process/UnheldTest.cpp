#include "platform/Unheld.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

namespace Morvane::Platform {
namespace {

class UnheldTest : public ::testing::Test {
protected:
    UnheldTest() {
        unlink(path.c_str());
        std::ofstream(path) << "something";
    }
    ~UnheldTest() override { unlink(path.c_str()); }

    const std::string path = "/tmp/corvel-unheld-" + std::to_string(getpid());
};

/// A process that does `hold` and then lives on until `end`.
class Holder {
public:
    template <typename Hold>
    explicit Holder(Hold hold) {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        child = fork();
        if (child == 0) {
            hold();
            close(ends[0]);
            [[maybe_unused]] const auto told = write(ends[1], "", 1);
            for (;;)
                pause();
        }
        close(ends[1]);
        char byte = 0;
        EXPECT_EQ(read(ends[0], &byte, 1), 1);
        close(ends[0]);
    }
    void end() const {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }

private:
    pid_t child;
};

TEST_F(UnheldTest, FileIsUnheldWhenNobodyHasItOpen) {
    EXPECT_TRUE(isUnheldFile(path));
}

TEST_F(UnheldTest, FileIsHeldByAnotherProcessUntilThatDies) {
    const Holder holder([&] { open(path.c_str(), O_RDWR); });
    EXPECT_FALSE(isUnheldFile(path));
    holder.end();
    EXPECT_TRUE(isUnheldFile(path));
}

TEST_F(UnheldTest, FileIsHeldByAMappingAlone) {
    const Holder holder([&] {
        const int descriptor = open(path.c_str(), O_RDWR);
        mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        close(descriptor);
    });
    EXPECT_FALSE(isUnheldFile(path));
    holder.end();
    EXPECT_TRUE(isUnheldFile(path));
}

TEST_F(UnheldTest, WhatIsNoFileOfOnesOwnIsNeverCalledUnheld) {
    const std::string link = path + "-link";
    unlink(link.c_str());
    ASSERT_EQ(symlink(path.c_str(), link.c_str()), 0);
    EXPECT_FALSE(isUnheldFile(link));
    EXPECT_FALSE(isUnheldFile("/tmp"));
    EXPECT_FALSE(isUnheldFile(path + "-missing"));
    unlink(link.c_str());
}

#ifdef __linux__
// Where its maker was killed after it had got its lasting name.
TEST_F(UnheldTest, SemaphoreIsRemovedWithThePassingNameOfItsMaking) {
    const std::string name = "unheld-passing-" + std::to_string(getpid());
    const std::string passing = "/dev/shm/sem.Pass" + std::to_string(getpid());
    const std::string others = "/dev/shm/sem.Othr" + std::to_string(getpid());
    std::ofstream(others) << "another program's";
    sem_close(sem_open(name.c_str(), O_CREAT | O_EXCL, 0600, 0));
    ASSERT_EQ(link(("/dev/shm/sem." + name).c_str(), passing.c_str()), 0);

    EXPECT_TRUE(removeSemaphore(name));

    EXPECT_EQ(access(passing.c_str(), F_OK), -1);
    EXPECT_EQ(sem_open(name.c_str(), 0), SEM_FAILED);
    EXPECT_FALSE(removeSemaphore(name));
    EXPECT_EQ(unlink(others.c_str()), 0);
}
#endif

TEST_F(UnheldTest, SemaphoresAreToldApartByWhoHasThemOpen) {
    const std::string prefix = "unheld-" + std::to_string(getpid()) + "-";
    const std::string kept = prefix + "kept", left = prefix + "left";
    const Holder keeper([&] { sem_open(kept.c_str(), O_CREAT | O_EXCL, 0600, 0); });
    const Holder leaver([&] { sem_open(left.c_str(), O_CREAT | O_EXCL, 0600, 0); });
    EXPECT_TRUE(unheldSemaphores(prefix).empty());
    leaver.end();
    EXPECT_EQ(unheldSemaphores(prefix), std::vector<std::string>{left});
    keeper.end();
    sem_unlink(kept.c_str());
    sem_unlink(left.c_str());
}

}  // namespace
}  // namespace Morvane::Platform
