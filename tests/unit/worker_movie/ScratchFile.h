#pragma once

#include "worker/movie/OutputFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace Morvane::Worker {

/// A path in a folder of the running test's own, empty at the start and gone at the end.
class ScratchFile {
public:
    ScratchFile() {
        const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
        folder = std::filesystem::temp_directory_path() /
                 (std::string("corvel-unit-") + test->test_suite_name() + "-" + test->name());
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
    }
    ~ScratchFile() {
        std::filesystem::remove_all(folder);
        EXPECT_FALSE(std::filesystem::exists(folder));
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    std::string path() const { return folder / "file"; }

    OutputFile with(const Bytes& contents) const {
        OutputFile file = OutputFile::create(path(), ExistingFile::Replace);
        file.write(0, contents);
        return file;
    }

private:
    std::filesystem::path folder;
};

}  // namespace Morvane::Worker
