#include "host/render/Sweep.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <semaphore.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/unit/host/TemporaryFolder.h"

namespace Corvel {
namespace {

// A bridge as a process without a private folder has it.
struct Bridge {
    explicit Bridge(int number) : name(fmt::format("abc{:02x}{:08x}{:019x}", number, getpid(), 0)) {}

    void make() const {
        std::filesystem::create_directories(folder());
        EXPECT_NE(open(file().c_str(), O_RDWR | O_CREAT, 0600), -1);
        EXPECT_NE(open((file() + "T").c_str(), O_RDWR | O_CREAT, 0600), -1);
        EXPECT_NE(sem_open(ready.c_str(), O_CREAT | O_EXCL, 0600, 0), SEM_FAILED);
        EXPECT_NE(sem_open(done.c_str(), O_CREAT | O_EXCL, 0600, 0), SEM_FAILED);
    }

    // How many of its four objects exist.
    int objects() const {
        int count = static_cast<int>(std::filesystem::exists(file())) +
                    static_cast<int>(std::filesystem::exists(file() + "T"));
        for (const std::string& semaphore : {ready, done}) {
            sem_t* const handle = sem_open(semaphore.c_str(), 0);
            if (handle != SEM_FAILED) {
                ++count;
                sem_close(handle);
            }
        }
        return count;
    }

    void remove() const {
        sem_unlink(ready.c_str());
        sem_unlink(done.c_str());
    }

    static std::string folder() { return std::string(std::getenv("CORVEL_TEMP_DIR")) + "/processbridge"; }
    std::string file() const { return folder() + "/" + name; }

    const std::string name;
    const std::string ready = "RDY-" + name.substr(3, 26);
    const std::string done = "DN-Y-" + name.substr(3, 25);
};

class SweepTest : public testing::Test {
protected:
    SweepTest() { setenv("CORVEL_TEMP_DIR", folder.path().c_str(), 1); }
    ~SweepTest() override { unsetenv("CORVEL_TEMP_DIR"); }

    const TemporaryFolder folder;
};

TEST_F(SweepTest, RemovesWhatTheDeadLeftAndNothingOfTheLiving) {
    const Bridge living(1), dead(2);
    living.make();
    const pid_t child = fork();
    if (child == 0) {
        dead.make();
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    ASSERT_EQ(dead.objects(), 4);

    const auto swept = sweepStaleObjects();

    EXPECT_EQ(dead.objects(), 0);
    EXPECT_EQ(living.objects(), 4);
    for (const std::string& object :
         {dead.file(), dead.file() + "T", "semaphore " + dead.ready, "semaphore " + dead.done}) {
        EXPECT_EQ(std::count(swept.begin(), swept.end(), object), 1) << object;
    }
    living.remove();
}

TEST_F(SweepTest, LeavesWhatIsNoBridgesAlone) {
    std::filesystem::create_directories(Bridge::folder());
    const std::string other = Bridge::folder() + "/notes.txt";
    std::ofstream(other) << "kept";
    const std::string semaphore = fmt::format("RDY-other-{}", getpid());
    sem_close(sem_open(semaphore.c_str(), O_CREAT, 0600, 0));

    sweepStaleObjects();

    EXPECT_TRUE(std::filesystem::exists(other));
    EXPECT_EQ(sem_unlink(semaphore.c_str()), 0);
}

}  // namespace
}  // namespace Corvel
