#pragma once

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>

namespace Morvane::Worker {

/// A file that is open for reading. Everything that reads a movie shares one, so that it is the same file for
/// all of them whatever becomes of its name. Immutable, so any thread may use it.
class SourceFile {
public:
    /// Throws StatusError: NotFound, NoPermission, BadArgument for what is no regular file.
    explicit SourceFile(const std::string& filePath);
    ~SourceFile();
    SourceFile(const SourceFile&) = delete;
    SourceFile& operator=(const SourceFile&) = delete;

    /// Bytes that the file had when it was opened.
    std::int64_t size() const { return length; }

    /// Reads up to `size` bytes from `position` on. The number of bytes, 0 at the end, or -1 with `errno`
    /// set.
    std::int64_t read(void* buffer, std::size_t size, std::int64_t position) const;

    /// Whether somebody has written into the file since it was opened, other than at its end.
    bool hasChanged() const;

    const std::string path;  ///< for messages

private:
    int descriptor;
    std::int64_t length = 0;
    timespec modified{};
};

using SharedSource = std::shared_ptr<const SourceFile>;

}  // namespace Morvane::Worker
