#include "platform/FilePages.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

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

TEST(LargePages, HoldTheEndOfALargeMappingToo) {
    constexpr std::uint64_t megabyte = std::uint64_t{1} << 20;
    EXPECT_EQ(Morvane::Platform::lengthToMap(megabyte + 1), megabyte + 1);
    EXPECT_EQ(Morvane::Platform::lengthToMap(33 * megabyte + 1), 34 * megabyte);
    EXPECT_EQ(Morvane::Platform::lengthToMap(34 * megabyte), 34 * megabyte);
}

TEST(LargePages, FitWhereALargeMappingIsHintedAt) {
    void* const hint = Morvane::Platform::hintForLargePages(std::uint64_t{33} << 20);

    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(hint) % (std::uintptr_t{2} << 20), 0u);
}

TEST_F(FilePages, KeepEveryByteOfALargeFile) {
    // Written in small pages, then grown by several large ones and a rest, in memory as well as on a disk.
    constexpr std::size_t before = (std::size_t{3} << 20) + 12345;
    constexpr std::size_t length = (std::size_t{17} << 20) + 54321;
    std::string bytes(before, '\0');
    for (std::size_t i = 0; i < before; ++i) {
        bytes[i] = static_cast<char>(i * 2654435761u >> 13);
    }
    const NamelessFile inMemory("/dev/shm");
    for (const NamelessFile* one : {&inMemory, &file}) {
        ASSERT_EQ(pwrite(one->descriptor, bytes.data(), before, 0), static_cast<ssize_t>(before));
        ASSERT_EQ(ftruncate(one->descriptor, length), 0);

        EXPECT_TRUE(allocateFileBlocks(one->descriptor, length));

        std::string content(length, 'x');
        ASSERT_EQ(pread(one->descriptor, content.data(), length, 0), static_cast<ssize_t>(length));
        EXPECT_TRUE(content == bytes + std::string(length - before, '\0'));
        EXPECT_GE(one->status().st_blocks * 512, static_cast<off_t>(length));
        EXPECT_EQ(one->status().st_size, static_cast<off_t>(length));
    }
}

/// Kilobytes of the mapping at `place` that lie in large pages, by the system's own account.
long kilobytesInLargePages(const void* place) {
    std::ifstream maps("/proc/self/smaps");
    bool found = false;
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t begin = 0, end = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx ", &begin, &end) == 2) {
            found = begin == reinterpret_cast<std::uintptr_t>(place);
        }
        long kilobytes = 0;
        if (found && std::sscanf(line.c_str(), "ShmemPmdMapped: %ld", &kilobytes) == 1) {
            return kilobytes;
        }
    }
    return 0;
}

TEST(FilePagesInMemory, AreLargeOnesFromTheStart) {
    utsname system{};
    int major = 0, minor = 0;
    if (uname(&system) != 0 || std::sscanf(system.release, "%d.%d", &major, &minor) != 2 ||
        std::pair(major, minor) < std::pair(6, 1) ||
        !std::filesystem::exists("/sys/kernel/mm/transparent_hugepage")) {
        GTEST_SKIP() << "this system has no large pages for files in memory";
    }
    constexpr std::size_t length = std::size_t{16} << 20;
    const NamelessFile file("/dev/shm");
    ASSERT_EQ(ftruncate(file.descriptor, length), 0);

    ASSERT_TRUE(allocateFileBlocks(file.descriptor, length));

    void* const place = mmap(Morvane::Platform::hintForLargePages(length), length, PROT_READ | PROT_WRITE,
                             MAP_SHARED | Morvane::Platform::populatePagesFlag(), file.descriptor, 0);
    ASSERT_NE(place, MAP_FAILED);
    EXPECT_GT(kilobytesInLargePages(place), 0);
    EXPECT_EQ(munmap(place, length), 0);
}

}  // namespace
