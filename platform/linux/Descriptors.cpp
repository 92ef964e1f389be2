#include "platform/Descriptors.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <climits>

namespace Morvane::Platform {

void closeDescriptorsFrom(int first) {
    if (syscall(SYS_close_range, static_cast<unsigned>(first), UINT_MAX, 0u) == 0)
        return;
    // Kernels before 5.9 close them one by one.
    const long limit = sysconf(_SC_OPEN_MAX);
    for (int descriptor = first; descriptor < limit; ++descriptor)
        close(descriptor);
}

}  // namespace Morvane::Platform
