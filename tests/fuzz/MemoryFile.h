#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace Morvane::Fuzz {

/// A file that lies in memory.
class MemoryFile {
public:
    MemoryFile(const std::uint8_t* data, std::size_t size) : descriptor(memfd_create("input", MFD_CLOEXEC)) {
        if (write(descriptor, data, size) != static_cast<ssize_t>(size))
            std::abort();
    }
    ~MemoryFile() { close(descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

private:
    int descriptor;
};

}  // namespace Morvane::Fuzz
