#include "host/render/OutputGuard.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "host/render/Failure.h"
#include "tests/unit/host/TemporaryFolder.h"

namespace Corvel {
namespace {

class OutputGuardTest : public testing::Test {
protected:
    std::string content(const std::string& name) const {
        std::ifstream file(folder / name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            found.push_back(entry.path().filename().string());
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    // As the node does: the movie gets its name at the end.
    void finishMovie() const {
        folder.write(".temporary", "new");
        std::filesystem::rename(folder / ".temporary", output);
    }

    const TemporaryFolder folder;
    const std::string output = folder / "a.mov";
};

using Names = std::vector<std::string>;

TEST_F(OutputGuardTest, HasNothingToDoWithoutAnOldFile) {
    OutputGuard sut(output, false);
    sut.setAside();
    finishMovie();
    EXPECT_EQ(sut.settle(true), output);
    EXPECT_EQ(names(), Names{"a.mov"});
}

TEST_F(OutputGuardTest, KeepsAPartialMovieUnderTheOutputsNameWhereItIsFree) {
    OutputGuard sut(output, false);
    sut.setAside();
    finishMovie();
    EXPECT_EQ(sut.settle(false), output);
    EXPECT_EQ(names(), Names{"a.mov"});
}

TEST_F(OutputGuardTest, LetsGoOfTheOldFileWhenTheNewOneIsWhole) {
    folder.write("a.mov", "old");
    OutputGuard sut(output, true);
    sut.setAside();
    EXPECT_EQ(content("a.mov"), "old") << "it stays readable until the new one takes its place";
    finishMovie();
    EXPECT_EQ(sut.settle(true), output);
    EXPECT_EQ(content("a.mov"), "new");
    EXPECT_EQ(names(), Names{"a.mov"});
}

TEST_F(OutputGuardTest, PutsTheOldFileBackWhenTheNewOneIsNotWhole) {
    folder.write("a.mov", "old");
    OutputGuard sut(output, true);
    sut.setAside();
    finishMovie();
    EXPECT_EQ(sut.settle(false), folder / "a.partial.mov");
    EXPECT_EQ(content("a.mov"), "old");
    EXPECT_EQ(content("a.partial.mov"), "new");
    EXPECT_EQ(names(), (Names{"a.mov", "a.partial.mov"}));
}

TEST_F(OutputGuardTest, NeverReplacesAnEarlierPartialMovie) {
    folder.write("a.mov", "old");
    folder.write("a.partial.mov", "earlier");
    OutputGuard sut(output, true);
    sut.setAside();
    finishMovie();
    EXPECT_EQ(sut.settle(false), folder / "a.partial-2.mov");
    EXPECT_EQ(content("a.partial.mov"), "earlier");
}

TEST_F(OutputGuardTest, LeavesTheOldFileWhenNoMovieCame) {
    folder.write("a.mov", "old");
    OutputGuard sut(output, true);
    sut.setAside();
    EXPECT_EQ(sut.settle(false), "");
    EXPECT_EQ(content("a.mov"), "old");
    EXPECT_EQ(names(), Names{"a.mov"});
}

TEST_F(OutputGuardTest, SparesAFileThatAppearedDuringTheRender) {
    folder.write("a.mov", "somebody else's");
    OutputGuard sut(output, false);
    sut.setAside();
    finishMovie();
    EXPECT_THROW(sut.settle(true), Failure);
    EXPECT_EQ(content("a.mov"), "somebody else's");
    EXPECT_EQ(content("a.partial.mov"), "new");
}

TEST_F(OutputGuardTest, PutsTheOldFileBackWhenItIsNeverSettled) {
    folder.write("a.mov", "old");
    {
        OutputGuard sut(output, true);
        sut.setAside();
        std::filesystem::remove(output);
    }
    EXPECT_EQ(content("a.mov"), "old");
    EXPECT_EQ(names(), Names{"a.mov"});
}

}  // namespace
}  // namespace Corvel
