#include "worker/read/SourceFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "worker/Status.h"

namespace Morvane::Worker {

namespace {

timespec modificationTime(const struct stat& state) {
#ifdef __APPLE__
    return state.st_mtimespec;
#else
    return state.st_mtim;
#endif
}

int openForReading(const std::string& path) {
    // Without blocking, so that a pipe without a writer does not hold us here.
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor == -1)
        throw StatusError(statusOfSystemError(errno),
                          "cannot open " + path + ": " + std::generic_category().message(errno));
    return descriptor;
}

}  // namespace

SourceFile::SourceFile(const std::string& filePath) : path(filePath), descriptor(openForReading(filePath)) {
    struct stat state {};
    if (fstat(descriptor, &state) != 0 || !S_ISREG(state.st_mode)) {
        close(descriptor);
        throw StatusError(Status::BadArgument, "cannot open " + path + ": it is no regular file");
    }
    length = state.st_size;
    modified = modificationTime(state);
}

SourceFile::~SourceFile() {
    close(descriptor);
}

std::int64_t SourceFile::read(void* buffer, std::size_t size, std::int64_t position) const {
    ssize_t count;
    do
        count = pread(descriptor, buffer, size, position);
    while (count == -1 && errno == EINTR);
    return count;
}

bool SourceFile::hasChanged() const {
    struct stat state {};
    if (fstat(descriptor, &state) != 0 || state.st_size < length)
        return true;
    // A movie that is still being written grows; what it had stays.
    const timespec now = modificationTime(state);
    const bool touched = now.tv_sec != modified.tv_sec || now.tv_nsec != modified.tv_nsec;
    return touched && state.st_size == length;
}

}  // namespace Morvane::Worker
