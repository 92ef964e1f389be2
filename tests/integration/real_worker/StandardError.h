#pragma once

#include <string>

namespace Morvane::Testing {

/// Collects what this process and its children write to standard error while it lives, in a file of its own.
class StandardError {
public:
    explicit StandardError(const std::string& filePath);
    ~StandardError();
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    /// What has been written by now.
    std::string text() const;

private:
    const std::string path;
    int original;
};

}  // namespace Morvane::Testing
