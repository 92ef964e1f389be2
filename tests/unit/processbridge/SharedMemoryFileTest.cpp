#include "processbridge/SharedMemoryFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>
#include <string>

#include "tests/children/recording_worker/Recording.h"

namespace {

using Morvane::ProcessBridge::SharedMemoryFile;
using Path = std::filesystem::path;

/// Bytes, present bytes and number of this process's mappings of a file.
struct Mappings {
    int count = 0;
    std::uint64_t size = 0;
    std::uint64_t present = 0;
};

Mappings mappingsOf(const Path& file) {
    std::ifstream maps("/proc/self/smaps");
    Mappings found;
    bool inside = false;
    for (std::string line; std::getline(maps, line);) {
        std::istringstream words(line);
        std::string first;
        std::uint64_t kibibytes = 0;
        words >> first >> kibibytes;
        if (first.find('-') != std::string::npos) {
            inside = line.size() > file.string().size() && line.find(file.string()) != std::string::npos;
            found.count += inside ? 1 : 0;
        } else if (inside && first == "Size:") {
            found.size += kibibytes * 1024;
        } else if (inside && first == "Rss:") {
            found.present += kibibytes * 1024;
        }
    }
    return found;
}

bool isOpenHere(const Path& file) {
    for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        const std::string target = std::filesystem::read_symlink(descriptor.path(), ignored).string();
        if (target.find(file.string()) == 0) {
            return true;
        }
    }
    return false;
}

class SharedMemoryFileTest : public testing::Test {
protected:
    SharedMemoryFileTest() { file.emplace("name", true); }

    SharedMemoryFile& sut() { return *file; }
    std::uint64_t lengthOnDisk() const { return std::filesystem::file_size(path); }

    static std::string errorsOf(const std::function<void()>& action) {
        testing::internal::CaptureStderr();
        action();
        return testing::internal::GetCapturedStderr();
    }

    const Morvane::Testing::Recording recording;
    const Path path = recording.folder / "shared" / "processbridge" / "name";
    std::optional<SharedMemoryFile> file;
};

TEST_F(SharedMemoryFileTest, MakesTheFolderButNotYetTheFile) {
    EXPECT_TRUE(is_directory(path.parent_path()));
    EXPECT_FALSE(exists(path));
    EXPECT_FALSE(sut().isValid());
    EXPECT_EQ(sut().data(), nullptr);
    EXPECT_EQ(sut().size(), 0u);
}

TEST_F(SharedMemoryFileTest, KeepsItsPathWhenTheEnvironmentChanges) {
    setenv("CORVEL_TEMP_DIR", "/nowhere", 1);

    EXPECT_TRUE(sut().map());

    EXPECT_TRUE(exists(path));
}

TEST_F(SharedMemoryFileTest, LiesInTmpWithoutAFolderInTheEnvironment) {
    const std::string name = "crv-test-" + std::to_string(getpid());
    unsetenv("CORVEL_TEMP_DIR");
    SharedMemoryFile other(name, true);

    EXPECT_TRUE(other.map());

    EXPECT_TRUE(std::filesystem::exists("/tmp/processbridge/" + name));
}

// Deliberate: an empty value is used as it is.
TEST_F(SharedMemoryFileTest, LiesBelowTheRootForAnEmptyValue) {
    const std::string name = "crv-test-" + std::to_string(getpid());
    setenv("CORVEL_TEMP_DIR", "", 1);
    {
        SharedMemoryFile other(name, true);

        testing::internal::CaptureStderr();
        const bool mapped = other.map();
        testing::internal::GetCapturedStderr();

        // Only the superuser may make that folder.
        EXPECT_EQ(mapped, std::filesystem::exists("/processbridge/" + name));
        EXPECT_FALSE(std::filesystem::exists("/tmp/processbridge/" + name));
    }
    rmdir("/processbridge");
}

TEST_F(SharedMemoryFileTest, IsReadableForItsUserAlone) {
    sut().open();

    struct stat status {};
    stat(path.c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(SharedMemoryFileTest, TakesTheLengthOfAnExistingFile) {
    std::ofstream(path) << "0123456789";

    sut().open();

    EXPECT_EQ(sut().size(), 10u);
    EXPECT_FALSE(sut().isValid());
}

TEST_F(SharedMemoryFileTest, GrowsToWhatIsAskedFor) {
    EXPECT_TRUE(sut().resize(5000));

    EXPECT_TRUE(sut().isValid());
    EXPECT_EQ(sut().size(), 5000u);
    EXPECT_EQ(lengthOnDisk(), 5000u);
    std::memset(sut().data(), 'x', 5000);
}

TEST_F(SharedMemoryFileTest, NeverShrinks) {
    sut().resize(5000);

    EXPECT_TRUE(sut().resize(100));

    EXPECT_EQ(sut().size(), 5000u);
    EXPECT_EQ(lengthOnDisk(), 5000u);
}

TEST_F(SharedMemoryFileTest, KeepsItsContentWhenItGrows) {
    sut().resize(3);
    std::memcpy(sut().data(), "abc", 3);

    sut().resize(100000);

    EXPECT_EQ(std::string(sut().data(), 3), "abc");
    EXPECT_EQ(sut().data()[99999], 0);
}

TEST_F(SharedMemoryFileTest, MapsItsCurrentLengthForAResizeToZero) {
    sut().resize(300);
    std::filesystem::resize_file(path, 500);

    EXPECT_TRUE(sut().resize(0));

    EXPECT_EQ(sut().size(), 500u);
}

TEST_F(SharedMemoryFileTest, CannotMapAnEmptyFileByAResizeToZero) {
    EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(sut().resize(0)); }), "mmap failed: Invalid argument\n");
    EXPECT_FALSE(sut().isValid());
}

TEST_F(SharedMemoryFileTest, HasAllItsBlocksAndPagesAfterAResize) {
    constexpr std::uint64_t length = 8 << 20;

    sut().resize(length);

    struct stat status {};
    stat(path.c_str(), &status);
    EXPECT_GE(static_cast<std::uint64_t>(status.st_blocks) * 512, length);
    EXPECT_EQ(mappingsOf(path).present, length);
}

TEST_F(SharedMemoryFileTest, FillsHolesThatTheOtherSideHasLeft) {
    constexpr std::uint64_t length = 1 << 20;
    sut().open();
    std::filesystem::resize_file(path, length);

    EXPECT_TRUE(sut().resize(length));

    struct stat status {};
    stat(path.c_str(), &status);
    EXPECT_GE(static_cast<std::uint64_t>(status.st_blocks) * 512, length);
}

TEST_F(SharedMemoryFileTest, TouchesNoPageWhenItIsMappedToBeRead) {
    constexpr std::uint64_t length = 8 << 20;
    sut().resize(length);
    sut().unmap();

    EXPECT_TRUE(sut().map());

    EXPECT_EQ(mappingsOf(path).size, length);
    EXPECT_EQ(mappingsOf(path).present, 0u);
}

// Deliberate: the size that was asked for stays after a failure.
TEST_F(SharedMemoryFileTest, FailsWhereTheFileCannotGrow) {
    constexpr std::uint64_t tooMuch = std::uint64_t{1} << 62;
    sut().resize(10);

    const std::string errors = errorsOf([&] { EXPECT_FALSE(sut().resize(tooMuch)); });

    EXPECT_EQ(errors.rfind("file resize failed: ", 0), 0u) << errors;
    EXPECT_EQ(sut().data(), nullptr);
    EXPECT_EQ(sut().size(), tooMuch);
    EXPECT_EQ(lengthOnDisk(), 10u);
}

TEST_F(SharedMemoryFileTest, CanBeOpenedByBothSides) {
    SharedMemoryFile other("name", false);
    sut().resize(10);
    std::memcpy(sut().data(), "abc", 4);

    EXPECT_TRUE(other.map());

    EXPECT_STREQ(other.data(), "abc");
}

TEST_F(SharedMemoryFileTest, FollowsGrowthByTheOtherSide) {
    sut().resize(10);
    SharedMemoryFile other("name", false);
    other.resize(70000);
    other.data()[69999] = 'x';

    EXPECT_TRUE(sut().map());

    EXPECT_EQ(sut().size(), 70000u);
    EXPECT_EQ(sut().data()[69999], 'x');
}

TEST_F(SharedMemoryFileTest, LeavesAMappingOfTheRightLengthAlone) {
    sut().resize(10);
    const char* const before = sut().data();

    EXPECT_TRUE(sut().map());

    EXPECT_EQ(sut().data(), before);
    EXPECT_EQ(mappingsOf(path).count, 1);
}

// Deliberate: the size never falls below what was recorded.
TEST_F(SharedMemoryFileTest, KeepsItsSizeWhenTheFileHasShrunk) {
    sut().resize(10000);
    std::filesystem::resize_file(path, 5000);

    EXPECT_TRUE(sut().map());

    EXPECT_EQ(sut().size(), 10000u);
}

// Deliberate: a new, empty file is mapped twice, and the first mapping stays.
TEST_F(SharedMemoryFileTest, MapsANewFileTwiceWithOneByte) {
    EXPECT_TRUE(sut().map());

    EXPECT_EQ(sut().size(), 1u);
    EXPECT_EQ(lengthOnDisk(), 1u);
    EXPECT_EQ(mappingsOf(path).count, 2);
    sut().unmap();
    EXPECT_EQ(mappingsOf(path).count, 1);
}

TEST_F(SharedMemoryFileTest, MapsAnExistingFileOnce) {
    std::ofstream(path) << "0123456789";

    EXPECT_TRUE(sut().map());

    EXPECT_EQ(sut().size(), 10u);
    EXPECT_EQ(mappingsOf(path).count, 1);
}

TEST_F(SharedMemoryFileTest, KeepsItsSizeWhenItIsUnmapped) {
    sut().resize(10);

    sut().unmap();
    sut().unmap();

    EXPECT_EQ(sut().data(), nullptr);
    EXPECT_EQ(sut().size(), 10u);
    EXPECT_EQ(mappingsOf(path).count, 0);
}

TEST_F(SharedMemoryFileTest, ForgetsItsSizeWhenItIsReleased) {
    sut().resize(10);

    EXPECT_TRUE(sut().release());

    EXPECT_EQ(sut().size(), 0u);
    EXPECT_EQ(sut().data(), nullptr);
    EXPECT_TRUE(sut().map());
    EXPECT_EQ(sut().size(), 10u);
}

// Deliberate: the descriptor stays open until the process ends.
TEST_F(SharedMemoryFileTest, UnlinksTheFileButDoesNotCloseIt) {
    sut().resize(10);

    file.reset();

    EXPECT_FALSE(exists(path));
    EXPECT_TRUE(isOpenHere(path));
    EXPECT_EQ(mappingsOf(path).count, 0);
}

TEST_F(SharedMemoryFileTest, SaysWhyItCannotBeOpened) {
    SharedMemoryFile other("no/such/folder", true);

    EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(other.map()); }),
              "Could not open file: No such file or directory\n");
    EXPECT_FALSE(other.isValid());
}

TEST_F(SharedMemoryFileTest, FailsToGrowWhereItCannotBeOpened) {
    SharedMemoryFile other("no/such/folder", true);

    const std::string errors = errorsOf([&] { EXPECT_FALSE(other.resize(10)); });

    EXPECT_EQ(errors,
              "Could not open file: No such file or directory\n"
              "file resize failed: Bad file descriptor\n");
    EXPECT_EQ(errorsOf([&] { EXPECT_FALSE(other.resize(0)); }),
              "Could not open file: No such file or directory\n"
              "mmap failed: Bad file descriptor\n");
}

}  // namespace
