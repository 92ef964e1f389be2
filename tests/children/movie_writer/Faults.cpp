#include "Faults.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>

namespace Morvane::Tests {

namespace {

std::atomic<Fault> planned = Fault::None;
std::atomic<int> faultyCall = 0;
std::atomic<int> calls = 0;

bool due() {
    return ++calls == faultyCall && planned != Fault::None;
}

template <typename Function>
Function original(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

[[noreturn]] void die() {
    kill(getpid(), SIGKILL);
    while (true) {
        pause();
    }
}

/// True when the call has failed, with errno set.
bool fails(int error) {
    errno = error;
    return true;
}

bool wouldGrow(int descriptor, off_t end) {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && end > status.st_size;
}

/// A killed write ends where one page of memory meets the next: half of the bytes or less, perhaps none.
size_t tornAt(off_t offset, size_t count) {
    constexpr off_t page = 4096;
    const off_t boundary = (offset + static_cast<off_t>(count / 2)) / page * page;
    return boundary > offset ? static_cast<size_t>(boundary - offset) : 0;
}

bool diskIsFull() {
    return planned == Fault::DiskFull && calls >= faultyCall;
}

}  // namespace

void injectFault(Fault fault, int call) {
    calls = 0;
    faultyCall = call;
    planned = fault;
}

int callsCounted() {
    return calls;
}

ssize_t faultyWrite(int descriptor, const void* bytes, size_t count, off_t offset) {
    static const auto write = original<ssize_t (*)(int, const void*, size_t, off_t)>("pwrite");
    const bool now = due();
    if (now && planned == Fault::Kill) {
        write(descriptor, bytes, tornAt(offset, count), offset);
        die();
    }
    if (now && planned == Fault::DiskError && fails(EIO)) {
        return -1;
    }
    if (diskIsFull() && wouldGrow(descriptor, offset + static_cast<off_t>(count))) {
        // The first one finds room for half of it, as on a real disk.
        return now && count > 1 ? write(descriptor, bytes, count / 2, offset) : (fails(ENOSPC), -1);
    }
    return write(descriptor, bytes, count, offset);
}

template <typename Call>
int faultyCallOf(Call&& call) {
    if (due()) {
        if (planned == Fault::Kill) {
            die();
        }
        if (planned == Fault::DiskError && fails(EIO)) {
            return -1;
        }
    }
    return call();
}

}  // namespace Morvane::Tests

// These stand before the C library's own in the program's symbols.
extern "C" {

ssize_t pwrite(int descriptor, const void* bytes, size_t count, off_t offset) {
    return Morvane::Tests::faultyWrite(descriptor, bytes, count, offset);
}

int ftruncate(int descriptor, off_t length) noexcept {
    static const auto truncate = Morvane::Tests::original<int (*)(int, off_t)>("ftruncate");
    return Morvane::Tests::faultyCallOf([&] { return truncate(descriptor, length); });
}

int fsync(int descriptor) {
    static const auto sync = Morvane::Tests::original<int (*)(int)>("fsync");
    return Morvane::Tests::faultyCallOf([&] { return sync(descriptor); });
}

int rename(const char* from, const char* to) noexcept {
    static const auto move = Morvane::Tests::original<int (*)(const char*, const char*)>("rename");
    return Morvane::Tests::faultyCallOf([&] { return move(from, to); });
}
}
