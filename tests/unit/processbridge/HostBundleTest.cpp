#include "processbridge/HostBundle.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/children/recording_worker/Recording.h"

namespace {

using Path = std::filesystem::path;

/// Runs the program that prints the host bundle's content folder, copied to where a test wants it.
class HostBundle : public testing::Test {
protected:
    /// Makes the bundle `name` with the identifier (none when empty) and `file` as its executable.
    Path makeBundle(const std::string& name, const std::string& identifier, const Path& file) const {
        const Path contents = recording.folder / name / "Contents";
        create_directories(contents / "MacOS");
        if (!identifier.empty()) {
            std::ofstream(contents / "Info.plist")
                << R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)"
                << "<key>CFBundleIdentifier</key><string>" << identifier << "</string></dict></plist>";
        }
        const Path executable = contents / "MacOS" / file.filename();
        copy_file(file, executable);
        return executable;
    }

    /// Output and error output of `executable`, and how it ended: "exit 0" or "signal 6".
    std::string run(const Path& executable, const std::string& arguments = "") const {
        const std::string command = "exec '" + executable.string() + "' " + arguments + " 2>&1";
        FILE* pipe = popen(command.c_str(), "r");
        std::string output;
        char buffer[256];
        while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) {
            output += buffer;
        }
        const int status = pclose(pipe);
        return output + (WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                             : "exit " + std::to_string(WEXITSTATUS(status)));
    }

    std::string contentsOf(const std::string& name) const {
        return (recording.folder / name / "Contents").string();
    }

    const Morvane::Testing::Recording recording;
};

TEST_F(HostBundle, IsTheOneThatTheExecutableLiesIn) {
    const Path finder = makeBundle("Host.app", "com.corvel.host", BUNDLE_FINDER);

    EXPECT_EQ(run(finder), contentsOf("Host.app") + "\nexit 0");
}

TEST_F(HostBundle, IsFoundByIdentifierAmongOthers) {
    const Path finder = makeBundle("Other.app", "com.example.other", BUNDLE_FINDER);
    const Path plugin = makeBundle("Host.bundle", "com.corvel.host", SAMPLE_PLUGIN);

    EXPECT_EQ(run(finder, plugin), contentsOf("Host.bundle") + "\nexit 0");
}

TEST_F(HostBundle, MayHaveAnyNameAndMove) {
    makeBundle("Host.app", "com.corvel.host", BUNDLE_FINDER);
    rename(recording.folder / "Host.app", recording.folder / "H\xc3\xb4te \xf0\x9f\x98\x80.app");

    EXPECT_EQ(run(recording.folder / "H\xc3\xb4te \xf0\x9f\x98\x80.app/Contents/MacOS/bundle_finder"),
              contentsOf("H\xc3\xb4te \xf0\x9f\x98\x80.app") + "\nexit 0");
}

TEST_F(HostBundle, IsTheOnlyBundleWhenNoneHasTheIdentifier) {
    const Path finder = makeBundle("Other.app", "com.example.other", BUNDLE_FINDER);

    EXPECT_EQ(run(finder), contentsOf("Other.app") + "\nexit 0");
}

TEST_F(HostBundle, IsTheFolderOfAnExecutableThatLiesInNone) {
    const Path finder = recording.folder / "bundle_finder";
    copy_file(BUNDLE_FINDER, finder);

    EXPECT_EQ(run(finder), recording.folder.string() + "/Contents\nexit 0");
}

TEST_F(HostBundle, IsNotGuessedAmongSeveral) {
    const Path finder = makeBundle("Other.app", "com.example.other", BUNDLE_FINDER);
    const Path plugin = makeBundle("Plugin.bundle", "", SAMPLE_PLUGIN);

    EXPECT_EQ(run(finder, plugin), "Don't know our bundle, possibilities:\n" +
                                       (recording.folder / "Other.app").string() + "\n" +
                                       (recording.folder / "Plugin.bundle").string() + "\nsignal 6");
}

}  // namespace
