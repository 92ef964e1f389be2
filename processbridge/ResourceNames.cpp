#include "processbridge/ResourceNames.h"

namespace Morvane::ProcessBridge {

// One working text that is edited on and on: the second prefix deliberately replaces part of the first one,
// and the worker forms the same names.
ResourceNames::ResourceNames(std::string bridgeName)
    : dataFile(bridgeName),
      requestFile(bridgeName.append("T")),
      readySemaphore(bridgeName.replace(0, 3, "RDY-")),
      doneSemaphore(bridgeName.replace(0, 2, "DN-")) {}

}  // namespace Morvane::ProcessBridge
