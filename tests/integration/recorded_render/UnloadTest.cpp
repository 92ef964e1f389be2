#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>

#include <string>

#include "platform/Environment.h"
#include "tests/children/recording_worker/Recording.h"

namespace Morvane {
namespace {

/// Runs the program to its end; its exit status, or -1 when it did not end by itself.
int run(const std::string& program, const std::string& first, const std::string& second) {
    std::string path = program;
    std::string one = first;
    std::string two = second;
    char* const arguments[] = {path.data(), one.data(), two.data(), nullptr};
    pid_t process = -1;
    if (posix_spawn(&process, path.c_str(), nullptr, nullptr, arguments, Platform::environment()) != 0) {
        return -1;
    }
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Unload, StopsTheWorkerOfAWriterThatTheHostNeverDestroyed) {
    const Testing::Recording recording;
    recording.answer("W0000000e", "mjpa\tMotion JPEG A");

    const int status = run(FORGETFUL_HOST, MOVIE_PLUGIN, (recording.folder / "ball.mov").string());

    EXPECT_EQ(status, 0);
    // Construction asks a fresh process's first worker for the codecs, and unloading asks nothing.
    EXPECT_EQ(recording.requests(), std::vector<std::string>{"W0000000e"});
    EXPECT_TRUE(recording.leftovers().empty());
}

}  // namespace
}  // namespace Morvane
