#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Corvel {

/// The bytes of a plain file, by their places in it. Any thread.
class FileBytes {
public:
    /// Does not throw: see isOpen().
    explicit FileBytes(const std::string& path);
    ~FileBytes();
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    /// False for what cannot be opened or is no plain file.
    bool isOpen() const { return descriptor >= 0; }
    /// As it was when the file was opened.
    std::uint64_t size() const { return size_; }

    /// Reads `count` bytes from `offset` on; false where they are not all there.
    bool read(std::uint64_t offset, void* to, std::size_t count) const;

private:
    int descriptor = -1;
    std::uint64_t size_ = 0;
};

/// Reads all of a file into `bytes`, which is as long as the file then. False where it cannot be read.
bool readWholeFile(const std::string& path, std::vector<unsigned char>& bytes);

}  // namespace Corvel
