#include "worker/bridge/BridgeEnd.h"

#include <semaphore.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "processbridge/NamedSemaphore.h"
#include "processbridge/SharedMemoryFile.h"
#include "worker/Status.h"

namespace Morvane::Worker {

using ProcessBridge::NamedSemaphore;
using ProcessBridge::ResourceNames;
using ProcessBridge::SharedMemoryFile;

namespace {

/// No text that a host sends is anywhere near as long; what is longer is not copied.
constexpr std::uint64_t longestText = std::uint64_t{64} << 20;

/// Opening a semaphore that is not there would end the process without a word about the reason.
void requireSemaphore(const std::string& name) {
    const std::string kept = semaphoreName(name);
    sem_t* handle = sem_open(kept.c_str(), 0);
    if (handle == SEM_FAILED)
        throw std::runtime_error("cannot open semaphore " + kept + ": " +
                                 std::generic_category().message(errno));
    sem_close(handle);
}

/// Maps `file` and answers how many of the mapped bytes really exist: a file that somebody has cut is shorter
/// than its mapping, and touching what is missing would kill the process.
std::uint64_t mapWholeFile(SharedMemoryFile& file) {
    if (!file.map())
        throw StatusError(Status::InputOutput, "cannot map the shared file");
    return std::min(file.size(), file.lengthOnDisk());
}

std::string readText(SharedMemoryFile& file, const char* what) {
    const std::uint64_t length = std::min(mapWholeFile(file), longestText);
    // The host is not supposed to write now, but one that does must not make the text grow past its end: the
    // copy is made once and only the copy is looked at.
    const std::size_t measured = strnlen(file.data(), length);
    if (measured == length)
        throw StatusError(Status::BadArgument, std::string("the ") + what + " has no end");
    const std::string copy(file.data(), measured);
    return copy.substr(0, copy.find('\0'));
}

}  // namespace

struct BridgeEnd::Objects {
    explicit Objects(const ResourceNames& names)
        : dataFile(names.dataFile, false),
          requestFile(names.requestFile, false),
          readySemaphore(names.readySemaphore, false, 0),
          doneSemaphore(names.doneSemaphore, false, 0) {}

    /// The destructors of these classes remove the objects from the system, which is the host's to do. So
    /// they are deliberately never destroyed while the host may live, only kept in reach until the process
    /// ends.
    static Objects* keep(std::unique_ptr<Objects> made) {
        static std::mutex mutex;
        static auto* kept = new std::vector<Objects*>;
        const std::lock_guard lock(mutex);
        kept->push_back(made.get());
        return made.release();
    }

    SharedMemoryFile dataFile;
    SharedMemoryFile requestFile;
    NamedSemaphore readySemaphore;
    NamedSemaphore doneSemaphore;
};

BridgeEnd::BridgeEnd(const ResourceNames& names) {
    requireSemaphore(names.readySemaphore);
    requireSemaphore(names.doneSemaphore);
    objects = Objects::keep(std::make_unique<Objects>(names));
}

BridgeEnd::~BridgeEnd() = default;

void BridgeEnd::waitForRequest() {
    objects->readySemaphore.acquire(1);
}

void BridgeEnd::wake() {
    objects->readySemaphore.release(1);
}

std::string BridgeEnd::readRequest() {
    return readText(objects->requestFile, "request");
}

std::span<const std::byte> BridgeEnd::payload(std::uint64_t bytes) {
    const std::uint64_t length = mapWholeFile(objects->dataFile);
    if (length < bytes)
        throw StatusError(Status::BadArgument, "the shared data file holds " + std::to_string(length) +
                                                   " bytes, not " + std::to_string(bytes));
    return {reinterpret_cast<const std::byte*>(objects->dataFile.data()), bytes};
}

std::string BridgeEnd::payloadText() {
    return readText(objects->dataFile, "text");
}

std::span<std::byte> BridgeEnd::grow(std::uint64_t bytes) {
    SharedMemoryFile& file = objects->dataFile;
    // An untouched mapping that is long enough stays as it is: no new page faults for every frame.
    const bool longEnough = file.isValid() && mapWholeFile(file) >= bytes;
    if (!longEnough && (!file.resize(bytes) || file.lengthOnDisk() < bytes)) {
        // The file object remembers the size that could not be had; the failure itself has still to be
        // answered.
        file.release();
        throw StatusError(Status::DiskFull,
                          "cannot make the shared data file " + std::to_string(bytes) + " bytes long");
    }
    return {reinterpret_cast<std::byte*>(file.data()), bytes};
}

void BridgeEnd::writeAnswer(const std::string& text) {
    const std::span<std::byte> target = grow(text.size() + 1);
    std::memcpy(target.data(), text.c_str(), target.size());
}

void BridgeEnd::postDone() {
    objects->doneSemaphore.release(1);
}

std::string semaphoreName(const std::string& name) {
    return name.substr(0, 30);
}

void removeSharedObjects(const ResourceNames& names) {
    sem_unlink(semaphoreName(names.doneSemaphore).c_str());
    sem_unlink(semaphoreName(names.readySemaphore).c_str());
    // Made only for what their destructors do.
    SharedMemoryFile dataFile(names.dataFile, false);
    SharedMemoryFile requestFile(names.requestFile, false);
}

}  // namespace Morvane::Worker
