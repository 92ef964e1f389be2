#pragma once

#include <cstdint>

#include "worker/bridge/Request.h"

namespace Morvane::Worker {

/// How an operation answers that it failed.
enum class FailureForm {
    Number,      ///< the status number alone: "-50"
    ErrorPrefix  ///< "Error: -50"
};

/// What one way of running the worker ("write", "read", "videooutput") does with requests. Used by the thread
/// of the request loop, which is the program's first one. Destroying it while something is open leaves what
/// is on disk readable.
class Mode {
public:
    virtual ~Mode() = default;

    /// Carries out one request and sets its answer. Throws what is to be answered as a failure: StatusError
    /// with its status; std::bad_alloc as NoMemory; anything else as BadArgument, since what decodes a
    /// request throws it.
    virtual void handle(Request& request) = 0;

    /// How the operation `opcode`, known or not, answers a failure.
    virtual FailureForm failureForm(std::int32_t opcode) const = 0;

    /// The worker is about to end: a handler that waits for something returns early. Any thread.
    virtual void interrupt() {}
};

}  // namespace Morvane::Worker
