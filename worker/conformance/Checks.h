#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "worker/conformance/Probe.h"

namespace Morvane::Worker {

/// Something that the protocol promises and a worker does not keep. `what()` says what it did instead.
class BrokenPromise : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Where a check may put files, and what earlier checks left there.
struct CheckPlace {
    std::string folder;
    /// The movie that the writing check makes and the reading ones open.
    std::string movie() const { return folder + "/conformance.mov"; }
};

/// One promise of the protocol (docs/protocol.md) and how it is tried on a worker.
struct Check {
    /// What must be true of the worker once the check's own process has been killed.
    enum class Afterwards { Nothing, WorkerEnds };

    const char* mode;                                        ///< the worker's mode word
    const char* promise;                                     ///< for the table
    void (*attempt)(Probe& probe, const CheckPlace& place);  ///< throws BrokenPromise
    Afterwards afterwards = Afterwards::Nothing;
};

/// All checks, in the order in which they are to be made.
const std::vector<Check>& allChecks();

}  // namespace Morvane::Worker
