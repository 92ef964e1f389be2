#pragma once

#include <chrono>
#include <string>

namespace Corvel {

/// The helper processes of this process as people see them: "QuickTime helper, process 1234", with ",
/// stopped" where one does nothing since somebody has stopped it. Where one of several is stopped, only that
/// one is named. Empty when there is none.
std::string helperProcessesText();

/// Lets helpers go on that somebody has stopped, so that they notice what they are told.
void continueStoppedHelpers();

/// Ends at once those that still run; whoever waits for them finds them.
void killHelpers();

/// Asks all helpers to end (SIGTERM), ends those that still run after `grace`, and reaps all. Blocks for the
/// grace and a second at most. Only where nobody else waits for them any more.
void endHelpers(std::chrono::milliseconds grace);

}  // namespace Corvel
