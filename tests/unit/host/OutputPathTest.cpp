#include "host/render/OutputPath.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/unit/host/TemporaryFolder.h"

namespace Corvel {
namespace {

namespace fs = std::filesystem;

TEST(OutputBehindLinks, IsThePathItselfWithoutALink) {
    EXPECT_EQ(outputBehindLinks("shot.mov"), "shot.mov");
    EXPECT_EQ(outputBehindLinks("/no/such/folder/shot.mov"), "/no/such/folder/shot.mov");
}

TEST(OutputBehindLinks, IsWhatTheLastLinkPointsTo) {
    const TemporaryFolder folder;
    const fs::path place(folder.path());
    fs::create_directory(place / "store");
    std::ofstream(place / "store/real.mov") << "old";
    fs::create_symlink("store/real.mov", place / "latest.mov");
    fs::create_symlink(place / "latest.mov", place / "shot.mov");

    EXPECT_TRUE(fs::equivalent(outputBehindLinks((place / "shot.mov").string()), place / "store/real.mov"));
}

TEST(OutputBehindLinks, MayNotBeThereYet) {
    const TemporaryFolder folder;
    const fs::path place(folder.path());
    fs::create_symlink("new.mov", place / "shot.mov");

    EXPECT_EQ(outputBehindLinks((place / "shot.mov").string()), (place / "new.mov").string());
}

TEST(OutputBehindLinks, LeavesACircleAlone) {
    const TemporaryFolder folder;
    const fs::path place(folder.path());
    fs::create_symlink("b.mov", place / "a.mov");
    fs::create_symlink("a.mov", place / "b.mov");

    EXPECT_EQ(outputBehindLinks((place / "a.mov").string()), (place / "a.mov").string());
}

}  // namespace
}  // namespace Corvel
