#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace Morvane::Tests {

/// A folder for the running test's files. Empties what an earlier, killed run may have left, removes
/// everything at the end.
class TestFolder {
public:
    TestFolder() : folder(std::filesystem::temp_directory_path() / nameOfTest()) {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
    }
    ~TestFolder() {
        std::error_code ignored;
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(folder, ignored);
        EXPECT_FALSE(std::filesystem::exists(folder));
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::string path() const { return folder; }
    std::string file(const std::string& name) const { return folder / name; }
    /// Names in the folder, hidden ones too.
    int entries() const {
        int count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) {
            ++count;
        }
        return count;
    }

private:
    static std::string nameOfTest() {
        const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string("corvel-") + test->test_suite_name() + "-" + test->name();
        for (char& character : name) {
            character = character == '/' ? '-' : character;
        }
        return name;
    }

    std::filesystem::path folder;
};

}  // namespace Morvane::Tests
