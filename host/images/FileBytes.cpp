#include "host/images/FileBytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace Corvel {

FileBytes::FileBytes(const std::string& path) {
    const int opened = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat facts {};
    if (opened >= 0 && fstat(opened, &facts) == 0 && S_ISREG(facts.st_mode)) {
        descriptor = opened;
        size_ = static_cast<std::uint64_t>(facts.st_size);
    } else if (opened >= 0) {
        close(opened);
    }
}

FileBytes::~FileBytes() {
    if (descriptor >= 0) {
        close(descriptor);
    }
}

bool FileBytes::read(std::uint64_t offset, void* to, std::size_t count) const {
    if (offset > size_ || count > size_ - offset) {
        return false;
    }
    auto* const bytes = static_cast<unsigned char*>(to);
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got = pread(descriptor, bytes + done, count - done, static_cast<off_t>(offset + done));
        if (got > 0) {
            done += static_cast<std::size_t>(got);
        } else if (got == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool readWholeFile(const std::string& path, std::vector<unsigned char>& bytes) {
    const FileBytes file(path);
    if (!file.isOpen()) {
        return false;
    }
    bytes.resize(file.size());
    return file.read(0, bytes.data(), bytes.size());
}

}  // namespace Corvel
