#include "platform/FilePages.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

namespace {

using Morvane::Platform::allocateFileBlocks;

/// An open file without a name.
class NamelessFile {
public:
    explicit NamelessFile(const std::string& folder) {
        std::filesystem::create_directories(folder);
        std::string path = folder + "/FilePagesTest-XXXXXX";
        descriptor = mkstemp(path.data());
        unlink(path.c_str());
    }
    ~NamelessFile() { close(descriptor); }

    struct stat status() const {
        struct stat status {};
        fstat(descriptor, &status);
        return status;
    }

    int descriptor;
};

class FilePages : public testing::Test {
protected:
    const NamelessFile file{SCRATCH_FOLDER};
};

TEST_F(FilePages, FillsTheHolesOfAFile) {
    constexpr off_t length = 1 << 20;
    ASSERT_EQ(ftruncate(file.descriptor, length), 0);
    ASSERT_LT(file.status().st_blocks * 512, length);

    EXPECT_TRUE(allocateFileBlocks(file.descriptor, length));

    EXPECT_GE(file.status().st_blocks * 512, length);
    EXPECT_EQ(file.status().st_size, length);
}

TEST_F(FilePages, GrowsAFileThatIsTooShort) {
    EXPECT_TRUE(allocateFileBlocks(file.descriptor, 10000));
    EXPECT_EQ(file.status().st_size, 10000);
}

TEST_F(FilePages, LeavesContentAndLengthAlone) {
    ASSERT_EQ(pwrite(file.descriptor, "abc", 3, 5000), 3);

    EXPECT_TRUE(allocateFileBlocks(file.descriptor, 100));

    char bytes[3] = {};
    EXPECT_EQ(pread(file.descriptor, bytes, 3, 5000), 3);
    EXPECT_EQ(std::string(bytes, 3), "abc");
    EXPECT_EQ(file.status().st_size, 5003);
}

TEST_F(FilePages, AsksForNothingWhenNothingIsWanted) {
    EXPECT_TRUE(allocateFileBlocks(file.descriptor, 0));
    EXPECT_EQ(file.status().st_size, 0);
}

TEST_F(FilePages, FailsOnAFileThatIsNotOpen) {
    EXPECT_FALSE(allocateFileBlocks(-1, 1));
    EXPECT_EQ(errno, EBADF);
}

TEST(FilePagesInMemory, FailsWhereTheFileSystemHasNoRoom) {
    struct statvfs system {};
    if (statvfs("/dev/shm", &system) != 0 || system.f_blocks == 0) {
        GTEST_SKIP() << "no memory file system of limited size";
    }
    const NamelessFile file("/dev/shm");
    // More than there can ever be, so that nothing is taken from anyone while the test runs.
    const std::uint64_t tooMuch = (std::uint64_t{system.f_blocks} + 1) * system.f_frsize;
    ASSERT_EQ(ftruncate(file.descriptor, static_cast<off_t>(tooMuch)), 0);

    EXPECT_FALSE(allocateFileBlocks(file.descriptor, tooMuch));

    EXPECT_EQ(errno, ENOSPC);
}

}  // namespace
