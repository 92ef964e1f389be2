#pragma once

#include <string>

#include "worker/conformance/Checks.h"

namespace Morvane::Worker {

/// How a check came out: `reason` is empty where the promise holds.
struct Outcome {
    std::string reason;

    bool holds() const { return reason.empty(); }
};

/// Makes one check in a process of its own, so that a worker that never answers costs only this check.
/// Everything that the check started is dead afterwards, and its shared files and semaphores are gone.
///
/// REQUIRES: this process has one thread. Blocks for at most ten seconds or so.
Outcome tryCheck(const Check& check, const std::string& workerPath, const CheckPlace& place);

}  // namespace Morvane::Worker
