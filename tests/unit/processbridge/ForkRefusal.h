#pragma once

namespace Morvane::Testing {

/// From now on this process cannot fork: the test program's own `fork` fails with EAGAIN.
void refuseToFork();

}  // namespace Morvane::Testing
