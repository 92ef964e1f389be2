#pragma once

#include <filesystem>
#include <string>

namespace Morvane::Worker::Trial {

/// A folder of the test's own; gone, with what is in it, when the test ends.
class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::string file(const std::string& name) const { return (path / name).string(); }

private:
    std::filesystem::path path;
};

/// What `command` (a shell's) writes to its standard output, byte for byte; throws where it does not end with
/// 0.
std::string outputOf(const std::string& command);

}  // namespace Morvane::Worker::Trial
