#include "platform/FilePages.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <span>
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

TEST(LargePages, AreOfNoUseToASmallMapping) {
    EXPECT_EQ(Morvane::Platform::hintForLargePages(1 << 20), nullptr);
}

TEST(LargePages, FitWhereALargeMappingIsHintedAt) {
    void* const hint = Morvane::Platform::hintForLargePages(std::uint64_t{33} << 20);

    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(hint) % (std::uintptr_t{2} << 20), 0u);
}

TEST_F(FilePages, KeepEveryByteWhenTheyAreGathered) {
    // Two large pages and a rest, in a file in memory as well as on a disk.
    constexpr std::size_t length = (std::size_t{5} << 20) + 12345;
    const NamelessFile inMemory("/dev/shm");
    for (const int descriptor : {inMemory.descriptor, file.descriptor}) {
        ASSERT_TRUE(allocateFileBlocks(descriptor, length));
        void* const place = mmap(Morvane::Platform::hintForLargePages(std::uint64_t{16} << 20), length,
                                 PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        ASSERT_NE(place, MAP_FAILED);
        const std::span<unsigned char> bytes(static_cast<unsigned char*>(place), length);
        const auto valueAt = [](std::size_t i) { return static_cast<unsigned char>(i * 2654435761u >> 13); };
        for (std::size_t i = 0; i < length; ++i) {
            bytes[i] = valueAt(i);
        }

        Morvane::Platform::gatherIntoLargePages(place, length);

        std::size_t different = 0;
        for (std::size_t i = 0; i < length; ++i) {
            different += bytes[i] != valueAt(i);
        }
        EXPECT_EQ(different, 0u);
        EXPECT_EQ(munmap(place, length), 0);
    }
}

}  // namespace
