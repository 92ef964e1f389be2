#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace Corvel {

/// A folder of the running test's own, made empty and removed again with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string(test->test_suite_name()) + "." + test->name();
        for (char& c : name) {
            c = c == '/' ? '-' : c;
        }
        path_ =
            std::filesystem::temp_directory_path() / ("corvel-test-" + name + "-" + std::to_string(getpid()));
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path() const { return path_.string(); }
    /// The path of a file in the folder.
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

    /// Makes a file with that content.
    void write(const std::string& name, const std::string& content = "") const {
        std::ofstream(path_ / name, std::ios::binary) << content;
    }

private:
    std::filesystem::path path_;
};

}  // namespace Corvel
