#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace Morvane::Worker {

/// The numbers that the worker answers: 0, or the code after "Error: ".
enum class Status : std::int32_t {
    Success = 0,
    DiskFull = -34,
    InputOutput = -36,
    NotFound = -43,
    Exists = -48,
    BadArgument = -50,  ///< a bad argument, a request that cannot be read, or a call out of order
    NoPermission = -54,
    NoMemory = -108,
    Cancelled = -128,  ///< the person closed the output's window
    CodecFailed = -8960,
    NotSupportedByCodec = -8961,  ///< a size or an option that the codec cannot take
};

/// A request that failed. `what()` is the reason in words for a person, without program name and code:
/// "cannot write /shots/a.mov: No space left on device".
class StatusError : public std::runtime_error {
public:
    StatusError(Status code, const std::string& reason) : std::runtime_error(reason), status(code) {}

    const Status status;
};

/// The status that says best what the positive `systemError` (an errno value) means.
Status statusOfSystemError(int systemError);

/// The status that says best what the negative `libraryError` (an AVERROR value) means; `otherwise` where it
/// says nothing about files or memory.
Status statusOfLibraryError(int libraryError, Status otherwise);

/// The same in the library's words.
std::string libraryReason(int libraryError);

}  // namespace Morvane::Worker
