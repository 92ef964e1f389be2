#include "platform/Confinement.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include "platform/linux/Landlock.h"

namespace Morvane::Platform {
namespace {

class ConfinementTest : public ::testing::Test {
protected:
    ConfinementTest() {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder / "open");
        std::ofstream(folder / "file") << "text";
    }
    ~ConfinementTest() override { std::filesystem::remove_all(folder); }

    /// The error number that `attempt` ends with in a confined process; 0 for success.
    int errorOf(const std::function<bool()>& attempt) const {
        const pid_t child = fork();
        if (child == 0) {
            confine({.readable = {"/"},
                     .writable = {folder / "open"},
                     .removable = {},
                     .memoryBytes = std::uint64_t{1} << 30,
                     .fileBytes = 1 << 20});
            _exit(attempt() ? 0 : errno);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    static bool canOpen(const std::filesystem::path& path, int flags) {
        return open(path.c_str(), flags, 0600) != -1;
    }

    const std::filesystem::path folder = "/tmp/corvel-confinement-" + std::to_string(getpid());
};

TEST_F(ConfinementTest, LeavesReadingAndThreadsAlone) {
    EXPECT_EQ(errorOf([&] { return canOpen(folder / "file", O_RDONLY); }), 0);
    EXPECT_EQ(errorOf([] {
                  int done = 0;
                  std::thread([&done] { done = 1; }).join();
                  return done == 1;
              }),
              0);
}

TEST_F(ConfinementTest, AllowsFilesInTheFoldersThatAreNamed) {
    const auto file = folder / "open" / "new";
    EXPECT_EQ(errorOf([&] { return canOpen(file, O_RDWR | O_CREAT) && unlink(file.c_str()) == 0; }), 0);
}

TEST_F(ConfinementTest, RefusesToWriteElsewhere) {
    if (landlockVersion() == 0)
        GTEST_SKIP() << "this kernel has no Landlock";
    EXPECT_EQ(errorOf([&] { return canOpen(folder / "file", O_RDWR); }), EACCES);
    EXPECT_EQ(errorOf([&] { return canOpen(folder / "new", O_RDWR | O_CREAT); }), EACCES);
    EXPECT_EQ(errorOf([&] { return unlink((folder / "file").c_str()) == 0; }), EACCES);
}

TEST_F(ConfinementTest, RefusesWhatDecodingDoesNotNeed) {
    EXPECT_EQ(errorOf([] { return socket(AF_INET, SOCK_STREAM, 0) != -1; }), EPERM);
    EXPECT_EQ(errorOf([&] { return chmod((folder / "file").c_str(), 0777) == 0; }), EPERM);
    EXPECT_EQ(errorOf([] { return kill(getppid(), 0) == 0; }), EPERM);
    EXPECT_EQ(errorOf([] { return kill(getpid(), 0) == 0; }), 0);
}

TEST_F(ConfinementTest, LimitsFiles) {
    EXPECT_EQ(errorOf([&] {
                  signal(SIGXFSZ, SIG_IGN);
                  const int file = open((folder / "open" / "long").c_str(), O_RDWR | O_CREAT, 0600);
                  return ftruncate(file, 2 << 20) == 0;
              }),
              EFBIG);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// The sanitizers need all three.
TEST_F(ConfinementTest, LimitsMemory) {
    constexpr std::size_t tooMuch = std::size_t{2} << 30;
    EXPECT_EQ(errorOf([] {
                  return mmap(nullptr, tooMuch, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) !=
                         MAP_FAILED;
              }),
              ENOMEM);
}

TEST_F(ConfinementTest, RefusesOtherProcesses) {
    EXPECT_EQ(errorOf([] { return fork() != -1; }), EPERM);
    EXPECT_EQ(errorOf([] { return execl("/bin/true", "true", nullptr) != -1; }), EPERM);
}
#endif

TEST(ConfinementSwitch, IsTheEnvironmentVariable) {
    unsetenv("CORVEL_HELPER_CONFINEMENT");
    EXPECT_TRUE(isConfinementWanted());
    setenv("CORVEL_HELPER_CONFINEMENT", "off", 1);
    EXPECT_FALSE(isConfinementWanted());
    unsetenv("CORVEL_HELPER_CONFINEMENT");
}

}  // namespace
}  // namespace Morvane::Platform
