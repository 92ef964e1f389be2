#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <sstream>

#include "OutputWorker.h"
#include "Program.h"
#include "VirtualDisplay.h"

namespace Morvane::Testing {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const auto windowLibrary = AnyOf(HasSubstr("libSDL"), HasSubstr("libQt"));

/// The files that the process has in its memory.
std::string mapsOf(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/maps");
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

class WorkerLibraries : public testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "SDL_VIDEODRIVER"})
            unsetenv(name);
    }
};

TEST_F(WorkerLibraries, NoLibraryForWindowsIsLinked) {
    EXPECT_THAT(outputOf({"ldd", CORVEL_HELPER}), Not(windowLibrary));
}

TEST_F(WorkerLibraries, WithoutADisplayNoLibraryForWindowsIsLoaded) {
    OutputWorker sut(OutputWorker::display(), "There is none");

    EXPECT_THAT(sut.deviceNames(), ElementsAre("Network 127.0.0.1:5004"));
    EXPECT_EQ(sut->selectMode(outputMode(640, 480, 25), 0), -50);
    const std::string maps = mapsOf(sut.pid());
    EXPECT_THAT(maps, HasSubstr("CorvelQuickTimeHelper-32"));
    EXPECT_THAT(maps, Not(windowLibrary));
}

TEST_F(WorkerLibraries, ADisplayThatCannotBeReachedIsNotListed) {
    setenv("DISPLAY", ":65000", 1);
    OutputWorker sut;

    EXPECT_THAT(sut.deviceNames(), ElementsAre("Network 127.0.0.1:5004"));
    EXPECT_THAT(sut.standardError(), HasSubstr("cannot use the displays: "));
}

TEST_F(WorkerLibraries, TheLibraryIsLoadedWhereThereIsADisplay) {
    if (const std::string missing = VirtualDisplay::missingPrograms(); !missing.empty())
        GTEST_SKIP() << "not installed: " << missing;
    const VirtualDisplay display(800, 600);
    OutputWorker sut;

    EXPECT_THAT(sut.deviceNames(), ElementsAre("Network 127.0.0.1:5004", StartsWith("Display 1")));
    EXPECT_THAT(mapsOf(sut.pid()), HasSubstr("libSDL2"));
}

}  // namespace
}  // namespace Morvane::Testing
