#include "host/app/SoundCheck.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "host/render/Failure.h"
#include "tests/unit/host/TemporaryFolder.h"

namespace Corvel {
namespace {

class SoundCheckTest : public testing::Test {
protected:
    /// A tool that does what the shell commands say.
    std::string tool(const std::string& commands) {
        const std::string path = folder / "tool";
        std::ofstream(path) << "#!/bin/sh\n" << commands << "\n";
        chmod(path.c_str(), 0755);
        return path;
    }

    std::string reasonFor(const std::string& movieTool, const std::string& audio = "a.wav") {
        try {
            checkSounds({{"codec", "x"}, {"audiofile", audio}}, movieTool);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, Exit::InputUnreadable);
            return failure.what();
        }
        return "";
    }

    const TemporaryFolder folder;
};

TEST_F(SoundCheckTest, TakesWhatTheToolTakes) {
    EXPECT_EQ(reasonFor(tool("echo 2 channels; exit 0")), "");
}

TEST_F(SoundCheckTest, TellsTheToolsReason) {
    EXPECT_EQ(reasonFor(tool("echo 'corvel-movie: cannot read sound from a.wav: none (-50)' >&2; exit 1")),
              "cannot use the audio file a.wav: cannot read sound from a.wav: none");
}

TEST_F(SoundCheckTest, HasAReasonOfItsOwnForAToolThatSaysNothing) {
    EXPECT_EQ(reasonFor(tool("exit 1")),
              "cannot use the audio file a.wav: it holds no sound that can be read");
}

/// A file must not be refused for what is wrong with the tool.
TEST_F(SoundCheckTest, ChecksNothingWithoutATool) {
    EXPECT_EQ(reasonFor(folder / "nowhere"), "");
    EXPECT_EQ(reasonFor(tool("exit 106")), "");
    EXPECT_EQ(reasonFor(tool("kill -9 $$")), "");
}

TEST_F(SoundCheckTest, AsksOnlyWhereThereIsAFile) {
    EXPECT_EQ(reasonFor(tool("exit 1"), ""), "");
}

TEST_F(SoundCheckTest, NamesTheFileInFull) {
    EXPECT_EQ(
        reasonFor(tool("test \"$1\" = sound && test \"$2\" = \"$PWD/a b:c.wav\" || exit 1"), "a b:c.wav"),
        "");
}

}  // namespace
}  // namespace Corvel
