#pragma once

#include <string>

namespace Morvane::ProcessBridge {

/// The names that controller and worker form from one bridge name (32 hexadecimal digits).
struct ResourceNames {
    explicit ResourceNames(std::string bridgeName);

    std::string dataFile;        ///< the bridge name
    std::string requestFile;     ///< the bridge name and "T"
    std::string readySemaphore;  ///< "RDY-", then the request file's name from its 4th character on
    std::string doneSemaphore;   ///< "DN-", then the ready semaphore's name from its 3rd character on
};

}  // namespace Morvane::ProcessBridge
