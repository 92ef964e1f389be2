#pragma once

#include <string>

#include "processbridge/ChildProcess.h"
#include "processbridge/NamedSemaphore.h"
#include "processbridge/ResourceNames.h"
#include "processbridge/SharedMemoryFile.h"

namespace Morvane::ProcessBridge {

/// What one controller shares with its worker, in the order of creation; destroyed in reverse.
struct ControllerResources {
    explicit ControllerResources(const ResourceNames& names);

    SharedMemoryFile dataFile;     ///< bulk data both ways and the worker's answer
    SharedMemoryFile requestFile;  ///< the request text, unmapped between requests
    NamedSemaphore readySemaphore;
    NamedSemaphore doneSemaphore;
    ChildProcess process;
};

}  // namespace Morvane::ProcessBridge
