#include "host/render/PrivateFolder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <semaphore.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "tests/unit/host/TemporaryFolder.h"

namespace Corvel {
namespace {

bool isThere(const std::string& path) {
    return std::filesystem::exists(path);
}

constexpr std::uint64_t tooMuchForMemory = std::uint64_t{1} << 60;

class PrivateFolderTest : public testing::Test {
protected:
    PrivateFolderTest() { unsetenv("CORVEL_TEMP_DIR"); }
    ~PrivateFolderTest() override { unsetenv("CORVEL_TEMP_DIR"); }
};

TEST_F(PrivateFolderTest, IsForThisUserAloneAndTellsTheBridge) {
    const PrivateFolder sut(1000);
    struct stat state {};
    ASSERT_EQ(stat(sut.path().c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 0777u, 0700u);
    EXPECT_STREQ(std::getenv("CORVEL_TEMP_DIR"), sut.path().c_str());
}

TEST_F(PrivateFolderTest, GoesWithEverythingInIt) {
    std::string path;
    {
        const PrivateFolder sut(1000);
        path = sut.path();
        std::filesystem::create_directory(path + "/processbridge");
        std::ofstream(path + "/processbridge/x") << "x";
    }
    EXPECT_FALSE(isThere(path));
    EXPECT_EQ(std::getenv("CORVEL_TEMP_DIR"), nullptr);
}

TEST_F(PrivateFolderTest, LiesElsewhereWhenMemoryIsTooSmall) {
    const PrivateFolder sut(tooMuchForMemory);
    EXPECT_NE(sut.path().rfind("/dev/shm/", 0), 0u);
}

TEST_F(PrivateFolderTest, LeavesTheUsersOwnFolderAlone) {
    const TemporaryFolder folder;
    setenv("CORVEL_TEMP_DIR", folder.path().c_str(), 1);
    {
        const PrivateFolder sut(1000);
        EXPECT_EQ(sut.path(), folder.path());
        sut.remove();
    }
    EXPECT_TRUE(isThere(folder.path()));
    EXPECT_STREQ(std::getenv("CORVEL_TEMP_DIR"), folder.path().c_str());
}

TEST_F(PrivateFolderTest, IsNotSweptWhileItsProcessLives) {
    const PrivateFolder sut(1000);
    const auto swept = sweepPrivateFolders();
    EXPECT_EQ(std::count(swept.begin(), swept.end(), sut.path()), 0);
    EXPECT_TRUE(isThere(sut.path()));
}

// A bridge name of this process's own, and the semaphores that belong to it.
struct Bridge {
    const std::string name = fmt::format("0f1e2d3c4b5a69788796a5b4{:08x}", getpid());
    const std::string ready = "RDY-" + name.substr(3, 26);
    const std::string done = "DN-Y-" + name.substr(3, 25);
};

// What a killed process leaves.
[[noreturn]] void leaveFolderBehind(const Bridge& bridge, int tell) {
    const PrivateFolder folder(tooMuchForMemory);
    std::filesystem::create_directory(folder.path() + "/processbridge");
    std::ofstream(folder.path() + "/processbridge/" + bridge.name) << "data";
    sem_open(bridge.ready.c_str(), O_CREAT, 0600, 0);
    sem_open(bridge.done.c_str(), O_CREAT, 0600, 0);
    _exit(write(tell, folder.path().c_str(), folder.path().size() + 1) > 0 ? 0 : 1);
}

TEST_F(PrivateFolderTest, IsSweptWithItsSemaphoresOnceItsProcessIsDead) {
    // A temporary folder of this test's own, so that nobody else sweeps there.
    const TemporaryFolder temporary;
    setenv("TMPDIR", temporary.path().c_str(), 1);
    const Bridge bridge;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        leaveFolderBehind(bridge, ends[1]);
    }
    char path[4096] = {};
    ASSERT_GT(read(ends[0], path, sizeof path), 0);
    waitpid(child, nullptr, 0);
    ASSERT_TRUE(isThere(path));

    const auto swept = sweepPrivateFolders();

    EXPECT_EQ(std::count(swept.begin(), swept.end(), path), 1);
    EXPECT_FALSE(isThere(path));
    EXPECT_EQ(sem_open(bridge.ready.c_str(), 0), SEM_FAILED);
    EXPECT_EQ(sem_open(bridge.done.c_str(), 0), SEM_FAILED);
    close(ends[0]);
    close(ends[1]);
    unsetenv("TMPDIR");
}

}  // namespace
}  // namespace Corvel
