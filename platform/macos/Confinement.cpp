#include "platform/Confinement.h"

#include "platform/ResourceLimits.h"

namespace Morvane::Platform {

// The system's only call for this, sandbox_init, knows no profile that leaves a process its shared files, and
// is long deprecated. So there are the limits alone, and `confinementText` says so.
void confine(const Confinement& confinement) {
    limitResources(confinement.memoryBytes, confinement.fileBytes);
}

std::string confinementText() {
    return "limits on memory and file size; files, network and programs are not restricted on this system";
}

void endWithParent() {}

}  // namespace Morvane::Platform
