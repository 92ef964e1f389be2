#include "platform/Descriptors.h"

#include <unistd.h>

namespace Morvane::Platform {

void closeDescriptorsFrom(int first) {
    const int limit = getdtablesize();
    for (int descriptor = first; descriptor < limit; ++descriptor)
        close(descriptor);
}

}  // namespace Morvane::Platform
