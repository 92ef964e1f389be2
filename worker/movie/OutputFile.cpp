#include "worker/movie/OutputFile.h"

#include "platform/Writeback.h"
#include "worker/Status.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace Morvane::Worker {

namespace {

[[noreturn]] void failed(const char* what, const std::string& path, int systemError) {
    throw StatusError(statusOfSystemError(systemError),
                      fmt::format("cannot {} {}: {}", what, path, std::strerror(systemError)));
}

/// O_NONBLOCK: opening a pipe that nobody reads must not hang before it is refused.
int openRegular(const char* what, const std::string& path, int flags) {
    const int descriptor = ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor < 0) {
        failed(what, path, errno);
    }
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        throw StatusError(Status::BadArgument, fmt::format("cannot {} {}: not a regular file", what, path));
    }
    return descriptor;
}

}  // namespace

OutputFile OutputFile::create(const std::string& path, ExistingFile existing) {
    const int created = ::open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0666);
    if (created >= 0) {
        return {path, created};
    }
    if (errno != EEXIST || existing == ExistingFile::Refuse) {
        failed("create", path, errno);
    }
    // O_CREAT again: a link that leads nowhere exists, and so does not what it names.
    OutputFile file(path, openRegular("create", path, O_CREAT | O_RDWR));
    file.truncate(0);
    return file;
}

OutputFile OutputFile::open(const std::string& path) {
    return {path, openRegular("open", path, O_RDWR)};
}

OutputFile OutputFile::openToRead(const std::string& path) {
    return {path, openRegular("open", path, O_RDONLY)};
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : name(std::move(other.name)), descriptor_(std::exchange(other.descriptor_, -1)) {}

OutputFile& OutputFile::operator=(OutputFile&& other) noexcept {
    std::swap(name, other.name);
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

std::int64_t OutputFile::size() const {
    struct stat status = {};
    if (::fstat(descriptor_, &status) != 0) {
        failed("read", name, errno);
    }
    return status.st_size;
}

void OutputFile::write(std::int64_t offset, ByteView bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::pwrite(descriptor_, bytes.data(), bytes.size(), offset);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            failed("write", name, written < 0 ? errno : EIO);
        }
        offset += written;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
}

void OutputFile::read(std::int64_t offset, std::span<std::uint8_t> bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = ::pread(descriptor_, bytes.data(), bytes.size(), offset);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            failed("read", name, errno);
        }
        if (count == 0) {
            throw StatusError(Status::InputOutput, fmt::format("cannot read {}: it ends too soon", name));
        }
        offset += count;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

Bytes OutputFile::read(std::int64_t offset, std::size_t count) const {
    Bytes bytes(count);
    read(offset, bytes);
    return bytes;
}

void OutputFile::truncate(std::int64_t size) {
    if (::ftruncate(descriptor_, size) != 0) {
        failed("write", name, errno);
    }
}

void OutputFile::startWriteback(std::int64_t offset, std::int64_t bytes) const {
    Platform::startWriteback(descriptor_, offset, bytes);
}

void OutputFile::sync() const {
    if (::fsync(descriptor_) != 0) {
        failed("write", name, errno);
    }
}

void OutputFile::checkStillThere() const {
    struct stat ours = {};
    struct stat named = {};
    if (::fstat(descriptor_, &ours) != 0) {
        failed("read", name, errno);
    }
    if (::stat(name.c_str(), &named) != 0) {
        throw StatusError(Status::NotFound, fmt::format("{} was removed while it was being written", name));
    }
    if (ours.st_dev != named.st_dev || ours.st_ino != named.st_ino) {
        throw StatusError(Status::NotFound, fmt::format("{} was replaced while it was being written", name));
    }
}

void OutputFile::takePermissionsOf(const OutputFile& other) {
    struct stat status = {};
    if (::fstat(other.descriptor_, &status) != 0 || ::fchmod(descriptor_, status.st_mode & 07777) != 0) {
        failed("set the permissions of", name, errno);
    }
}

void OutputFile::renameOver(const std::string& other) {
    if (std::rename(name.c_str(), other.c_str()) != 0) {
        failed("rename to", other, errno);
    }
    name = other;
}

void OutputFile::remove() noexcept {
    try {
        checkStillThere();
        ::unlink(name.c_str());
    } catch (const StatusError&) {
        // The name is somebody else's by now.
    }
}

void syncFolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        // A folder that may be written but not listed cannot be synced; the name in it is as safe as it gets.
        if (errno == EACCES || errno == EPERM) {
            return;
        }
        failed("open", folder, errno);
    }
    const int result = ::fsync(descriptor);
    const int systemError = errno;
    ::close(descriptor);
    // Some network file systems know no sync of folders.
    if (result != 0 && systemError != EINVAL && systemError != ENOTSUP) {
        failed("sync", folder, systemError);
    }
}

}  // namespace Morvane::Worker
