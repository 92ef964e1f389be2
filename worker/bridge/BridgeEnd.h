#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "processbridge/ResourceNames.h"

namespace Morvane::Worker {

/// The worker's end of the bridge: two shared files and two semaphores that the host has made. Between
/// `waitForRequest` and `postDone` the worker owns both files; outside it touches neither.
///
/// What the host wrote is untrusted. Its texts are copied out once, up to the file's real end, and every
/// length is held against the file's real size before it is used.
///
/// The host removes the four objects. Only where it has died may the worker do it, with
/// `removeSharedObjects`; the destructor leaves them alone.
///
/// All operations belong to the thread of the request loop, save `wake`.
class BridgeEnd {
public:
    /// Opens the semaphores. Throws std::runtime_error where they do not exist, which means that there is no
    /// host.
    explicit BridgeEnd(const ProcessBridge::ResourceNames& names);
    ~BridgeEnd();
    BridgeEnd(const BridgeEnd&) = delete;
    BridgeEnd& operator=(const BridgeEnd&) = delete;

    /// Blocks until the host has posted a request or `wake` was called.
    void waitForRequest();

    /// Lets a running or the next `waitForRequest` return without a request. Any thread.
    void wake();

    /// The request's text. Throws StatusError (BadArgument) where the file has none: missing, unterminated or
    /// longer than a request can be.
    std::string readRequest();

    /// The first `bytes` bytes of the data file, mapped: what the host handed over. Valid until `grow` or
    /// `writeAnswer`, at the latest until `postDone`. The host may still write there, so read each byte once.
    /// Throws StatusError (BadArgument) where the file is shorter.
    std::span<const std::byte> payload(std::uint64_t bytes);

    /// The zero-terminated text at the start of the data file. Throws StatusError (BadArgument) as
    /// `readRequest`.
    std::string payloadText();

    /// The data file's first `bytes` bytes, mapped for writing; the file grows as needed and never shrinks.
    /// Validity as with `payload`. Throws StatusError (DiskFull) where it cannot grow.
    std::span<std::byte> grow(std::uint64_t bytes);

    /// Puts `text` and its terminating zero at the start of the data file. Throws as `grow`.
    void writeAnswer(const std::string& text);

    /// Hands both files back to the host.
    void postDone();

private:
    struct Objects;
    Objects* objects;  // deliberately never destroyed: their destructors would remove them from the system
};

/// What a semaphore keeps of the name that it is given: 30 characters.
std::string semaphoreName(const std::string& name);

/// Removes the four objects of a bridge from the system. Only for a host that has died. Mappings and open
/// semaphores of the calling process stay good, so any thread may call it.
void removeSharedObjects(const ProcessBridge::ResourceNames& names);

}  // namespace Morvane::Worker
