#pragma once

#include "worker/movie/AtomWriter.h"

#include <cstdint>
#include <string>

namespace Morvane::Worker {

enum class ExistingFile { Replace, Refuse };

/// A regular file that is open for reading and writing at any offset, closed by its destructor. Every failure
/// throws StatusError with the path and what the system said. Used by one thread at a time, but for `sync`.
class OutputFile {
public:
    /// Creates `path`. Replace keeps an existing file's node and empties it; Refuse throws Exists.
    static OutputFile create(const std::string& path, ExistingFile existing);
    /// Opens an existing file. Throws NotFound, NoPermission, BadArgument (not a regular file).
    static OutputFile open(const std::string& path);
    /// The same, for reading only.
    static OutputFile openToRead(const std::string& path);

    OutputFile(OutputFile&& other) noexcept;
    OutputFile& operator=(OutputFile&& other) noexcept;
    ~OutputFile();

    const std::string& path() const { return name; }
    std::int64_t size() const;

    void write(std::int64_t offset, ByteView bytes);
    /// Throws InputOutput when fewer bytes are there.
    void read(std::int64_t offset, std::span<std::uint8_t> bytes) const;
    Bytes read(std::int64_t offset, std::size_t count) const;
    void truncate(std::int64_t size);

    /// Asks the system to begin bringing these bytes to the disk; waits for nothing, reports nothing.
    void startWriteback(std::int64_t offset, std::int64_t bytes) const;
    /// Returns when everything written is on the disk. Any thread.
    void sync() const;
    /// Throws NotFound when the path no longer names this file: somebody removed or replaced it.
    void checkStillThere() const;
    void takePermissionsOf(const OutputFile& other);
    /// Gives this file the name `other` in place of whatever has it.
    void renameOver(const std::string& other);
    /// Removes the name, if it still is this file's.
    void remove() noexcept;

private:
    OutputFile(std::string path, int descriptor) : name(std::move(path)), descriptor_(descriptor) {}

    std::string name;
    int descriptor_ = -1;
};

/// Brings the folder of `path` to the disk, so that the name in it survives a crash of the machine.
void syncFolderOf(const std::string& path);

}  // namespace Morvane::Worker
