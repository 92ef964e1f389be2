#include "filesystem/FileSystem.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace {

namespace sut = Morvane::FileSystem;

/// A folder of the running test's own, empty at its start and gone at its end; also the current folder.
class FileSystem : public testing::Test {
protected:
    FileSystem() {
        remove_all(folder);
        create_directories(folder);
        std::filesystem::current_path(folder);
    }
    ~FileSystem() override {
        std::filesystem::current_path(before);
        remove_all(folder);
    }

    static void write(const std::string& path, const std::string& content = "abc") {
        std::ofstream(path) << content;
    }

    static mode_t modeOf(const std::string& path) {
        struct stat status {};
        stat(path.c_str(), &status);
        return status.st_mode & 07777;
    }

    const std::filesystem::path before = std::filesystem::current_path();
    const std::filesystem::path folder =
        std::filesystem::path(SCRATCH_FOLDER) / testing::UnitTest::GetInstance()->current_test_info()->name();
};

/// The superuser may do everything; while this lives, its real user id is that of nobody.
class NobodysRights {
public:
    NobodysRights() {
        if (isSuperuser && setreuid(65534, static_cast<uid_t>(-1)) != 0) {
            throw std::system_error(errno, std::generic_category());
        }
    }
    ~NobodysRights() {
        if (isSuperuser && setreuid(0, 0) != 0) {
            std::abort();
        }
    }

private:
    const bool isSuperuser = getuid() == 0;
};

TEST_F(FileSystem, TellsFilesFromFolders) {
    write("file");

    EXPECT_TRUE(sut::exists("file"));
    EXPECT_TRUE(sut::isRegularFile("file"));
    EXPECT_FALSE(sut::isDirectory("file"));
    EXPECT_TRUE(sut::exists("."));
    EXPECT_TRUE(sut::isDirectory("."));
    EXPECT_FALSE(sut::isRegularFile("."));
    EXPECT_FALSE(sut::isRegularFile("/dev/null"));
}

TEST_F(FileSystem, KnowsWhatIsNotThere) {
    EXPECT_FALSE(sut::exists("none"));
    EXPECT_FALSE(sut::isDirectory("none"));
    EXPECT_FALSE(sut::isRegularFile("none"));
    EXPECT_EQ(sut::fileSize("none"), 0u);
}

TEST_F(FileSystem, FollowsLinksInQueries) {
    write("file");
    std::filesystem::create_symlink("file", "link");
    std::filesystem::create_symlink("none", "dangling");

    EXPECT_TRUE(sut::isRegularFile("link"));
    EXPECT_FALSE(sut::exists("dangling"));
}

TEST_F(FileSystem, KnowsSizesBeyond32Bits) {
    write("file");
    std::filesystem::resize_file("file", 5'000'000'000);

    EXPECT_EQ(sut::fileSize("file"), 5'000'000'000u);
}

TEST_F(FileSystem, MakesOneLevelOfFolders) {
    EXPECT_TRUE(sut::makeDirectory("new", 0750));
    EXPECT_EQ(modeOf("new"), 0750u);
    EXPECT_FALSE(sut::makeDirectory("new", 0750));
    EXPECT_FALSE(sut::makeDirectory("a/b", 0750));
}

TEST_F(FileSystem, ChangesTheCurrentFolder) {
    sut::makeDirectory("inner", 0755);

    EXPECT_TRUE(sut::changeDirectory("inner"));

    EXPECT_EQ(sut::currentDirectory(), (std::filesystem::canonical(folder) / "inner").string());
    EXPECT_FALSE(sut::changeDirectory("none"));
}

TEST_F(FileSystem, HasNoCurrentFolderWhenItsPathIsTooLong) {
    const std::string name(200, 'x');
    for (int depth = 0; depth < 6; ++depth) {
        ASSERT_TRUE(sut::makeDirectory(name, 0755));
        ASSERT_TRUE(sut::changeDirectory(name));
    }

    EXPECT_EQ(sut::currentDirectory(), "");
}

TEST_F(FileSystem, ChangesModes) {
    write("file");

    EXPECT_TRUE(sut::changeMode("file", 0600));
    EXPECT_EQ(modeOf("file"), 0600u);
    EXPECT_TRUE(sut::makeReadableAndWritableByAll("file"));
    EXPECT_EQ(modeOf("file"), 0666u);
    EXPECT_FALSE(sut::changeMode("none", 0600));
    EXPECT_FALSE(sut::makeReadableAndWritableByAll("none"));
}

TEST_F(FileSystem, AsksForAccess) {
    write("file");

    EXPECT_TRUE(sut::isReadable("file"));
    EXPECT_TRUE(sut::isWritable("file"));
    EXPECT_TRUE(sut::isReadableAndWritable("file"));
    EXPECT_FALSE(sut::isReadable("none"));
    EXPECT_FALSE(sut::isWritable("none"));
    EXPECT_FALSE(sut::isReadableAndWritable("none"));
}

TEST_F(FileSystem, RefusesAccessThatTheModeForbids) {
    write("file");
    sut::changeMode("file", 0444);
    const NobodysRights rights;

    EXPECT_TRUE(sut::isReadable("file"));
    EXPECT_FALSE(sut::isWritable("file"));
    EXPECT_FALSE(sut::isReadableAndWritable("file"));
}

TEST_F(FileSystem, RemovesFilesAndEmptyFolders) {
    write("file");
    sut::makeDirectory("empty", 0755);
    sut::makeDirectory("full", 0755);
    write("full/file");

    EXPECT_TRUE(sut::remove("file"));
    EXPECT_TRUE(sut::remove("empty"));
    EXPECT_FALSE(sut::remove("full"));
    EXPECT_FALSE(sut::remove("none"));
    EXPECT_FALSE(sut::exists("file"));
    EXPECT_FALSE(sut::exists("empty"));
}

TEST_F(FileSystem, RemovesTreesWithoutFollowingLinks) {
    std::filesystem::create_directories("tree/a/b");
    write("tree/a/b/file");
    write("outside");
    std::filesystem::create_symlink("../outside", "tree/link");
    std::filesystem::create_directory_symlink("..", "tree/up");

    EXPECT_TRUE(sut::removeTree("tree"));

    EXPECT_FALSE(sut::exists("tree"));
    EXPECT_TRUE(sut::exists("outside"));
}

TEST_F(FileSystem, RemovesASingleFileAsATree) {
    write("file");

    EXPECT_TRUE(sut::removeTree("file"));

    EXPECT_FALSE(sut::exists("file"));
    EXPECT_FALSE(sut::removeTree("none"));
}

TEST_F(FileSystem, RenamesOverAnExistingFile) {
    write("old", "content");
    write("new");

    EXPECT_TRUE(sut::rename("old", "new"));

    EXPECT_FALSE(sut::exists("old"));
    EXPECT_EQ(sut::fileSize("new"), 7u);
    EXPECT_FALSE(sut::rename("none", "new"));
}

TEST_F(FileSystem, ResolvesPaths) {
    sut::makeDirectory("inner", 0755);
    std::filesystem::create_symlink("inner", "link");

    EXPECT_EQ(sut::realPath("inner/../link/."), (std::filesystem::canonical(folder) / "inner").string());
    EXPECT_EQ(sut::realPath("none"), "");
}

TEST_F(FileSystem, KnowsTheTemporaryFolder) {
    EXPECT_EQ(sut::temporaryDirectory(), "/var/tmp/");
}

TEST_F(FileSystem, OpensLibraries) {
    void* library = sut::openLibrary(SAMPLE_PLUGIN);

    ASSERT_NE(library, nullptr);
    EXPECT_NE(dlsym(library, "answerOfSamplePlugin"), nullptr);
    dlclose(library);
    EXPECT_EQ(sut::openLibrary("./none.so"), nullptr);
}

}  // namespace
