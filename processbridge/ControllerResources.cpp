#include "processbridge/ControllerResources.h"

namespace Morvane::ProcessBridge {

ControllerResources::ControllerResources(const ResourceNames& names)
    : dataFile(names.dataFile, true),
      requestFile(names.requestFile, true),
      readySemaphore(names.readySemaphore, true, 0),
      doneSemaphore(names.doneSemaphore, true, 0) {}

}  // namespace Morvane::ProcessBridge
