#include "platform/Environment.h"

#include <crt_externs.h>

namespace Morvane::Platform {

char** environment() {
    // A bundle that is loaded into a host cannot name `environ` itself.
    return *_NSGetEnviron();
}

}  // namespace Morvane::Platform
