#include "worker/output/DeviceLock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "worker/Status.h"

namespace Morvane::Worker {
namespace {

using testing::HasSubstr;

class DeviceLockTest : public testing::Test {
protected:
    void SetUp() override { std::filesystem::remove(DeviceLock::path(key)); }
    void TearDown() override { EXPECT_FALSE(std::filesystem::exists(DeviceLock::path(key))); }

    /// One for each test and process, since tests run side by side.
    const std::string key = "test-" + std::to_string(getpid());
};

TEST_F(DeviceLockTest, ASecondLockIsRefusedNamingDeviceAndHolder) {
    const DeviceLock first(key, "Display 1: Big");

    try {
        const DeviceLock second(key, "Display 1: Big");
        FAIL() << "locked twice";
    } catch (const StatusError& error) {
        EXPECT_EQ(error.status, Status::NoPermission);
        EXPECT_THAT(error.what(), HasSubstr("Display 1: Big"));
        EXPECT_THAT(error.what(), HasSubstr("by process " + std::to_string(getpid())));
    }
}

TEST_F(DeviceLockTest, TheDeviceIsFreeAgainAfterwards) {
    std::optional<DeviceLock> lock;
    lock.emplace(key, "Display 1");
    lock.reset();

    EXPECT_FALSE(std::filesystem::exists(DeviceLock::path(key)));
    EXPECT_NO_THROW(lock.emplace(key, "Display 1"));
}

TEST_F(DeviceLockTest, OtherDevicesAreNotAffected) {
    const DeviceLock first(key, "Display 1");

    EXPECT_NO_THROW(DeviceLock(key + "-other", "Display 2"));
}

TEST_F(DeviceLockTest, TheFileOfAKilledWorkerIsTakenOver) {
    const pid_t child = fork();
    if (child == 0) {
        const DeviceLock lock(key, "Display 1");
        _exit(0);  // no destructor runs, as after a kill
    }
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    ASSERT_TRUE(std::filesystem::exists(DeviceLock::path(key)));

    EXPECT_NO_THROW(DeviceLock(key, "Display 1"));
}

TEST_F(DeviceLockTest, AnyKeyMakesAFileName) {
    const std::string odd = key + "-/../\"\\:[::1]";

    const DeviceLock lock(odd, "Odd");

    EXPECT_TRUE(std::filesystem::exists(DeviceLock::path(odd)));
    EXPECT_EQ(std::filesystem::path(DeviceLock::path(odd)).parent_path(), "/tmp");
}

TEST_F(DeviceLockTest, ALinkInItsPlaceIsNotFollowed) {
    const std::string target = DeviceLock::path(key) + ".target";
    std::ofstream(target) << "precious";
    std::filesystem::create_symlink(target, DeviceLock::path(key));

    EXPECT_THROW(DeviceLock(key, "Display 1"), StatusError);

    std::string content;
    std::ifstream(target) >> content;
    EXPECT_EQ(content, "precious");
    std::filesystem::remove(DeviceLock::path(key));
    std::filesystem::remove(target);
}

}  // namespace
}  // namespace Morvane::Worker
