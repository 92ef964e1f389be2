#pragma once

#include <cstdint>
#include <string>

namespace Morvane::ProcessBridge {

/// A file in the bridge's folder that two processes map. Both sides use this class; the folder is the value
/// of CORVEL_TEMP_DIR (an empty value is used as it is) or /tmp, followed by "/processbridge".
///
/// Takes no locks: at any moment one side owns the file, and the bridge's semaphores say which.
/// Failures are reported on standard error and as false; nothing throws but for memory. A file only grows.
class SharedMemoryFile {
public:
    /// Settles the path and makes the folder (one level, mode 0775); the file itself is created by the first
    /// `open`, `resize` or `map`. `create` is accepted and ignored: both sides may be first.
    SharedMemoryFile(const std::string& name, bool create);

    /// Unmaps and unlinks the file, whoever created it. Deliberately leaves the descriptor open.
    ~SharedMemoryFile();

    SharedMemoryFile(const SharedMemoryFile&) = delete;
    SharedMemoryFile& operator=(const SharedMemoryFile&) = delete;

    /// Opens or creates the file (mode 0600) and takes its length as the size.
    void open();

    /// Maps at least `length` bytes, growing the file if need be; 0 asks for its current length. All mapped
    /// bytes up to `length` are backed by blocks and their pages are present. A smaller `length` never
    /// shrinks anything. False when the file cannot be grown or mapped: then nothing is mapped, and the size
    /// keeps the value that was asked for, deliberately. Invalidates what `data` answered before.
    bool resize(std::uint64_t length);

    /// Maps the whole file, following growth by the other side; an empty new file becomes 1 byte long. Leaves
    /// a mapping of the right length alone. Where this object has opened the file before, blocks are had for
    /// all of it, as in `resize`; a file that is opened here keeps the blocks that it has, since whoever grew
    /// it has allocated them. False when there is no mapping.
    bool map();

    /// Start of the mapping; null when not mapped.
    char* data() const { return address; }
    /// Bytes mapped, or last recorded.
    std::uint64_t size() const { return size_; }
    /// Bytes that the file has now; fewer than `size` where somebody has cut it. 0 while it is not open.
    std::uint64_t lengthOnDisk() const;

    /// Gives the mapping back; the size stays.
    void unmap();
    /// `unmap`, and the size becomes 0. Always true.
    bool release();

    /// Open and mapped.
    bool isValid() const { return fd != -1 && address != nullptr; }

private:
    bool openForMap();
    bool resizeOpened(std::uint64_t length, int extraMapFlags);
    bool mapSize(int extraMapFlags);

    char* address = nullptr;
    std::uint64_t size_ = 0;
    std::int32_t fd = -1;
    std::string path;
};

}  // namespace Morvane::ProcessBridge
