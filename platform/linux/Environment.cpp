#include "platform/Environment.h"

#include <unistd.h>

namespace Morvane::Platform {

char** environment() {
    return ::environ;
}

}  // namespace Morvane::Platform
