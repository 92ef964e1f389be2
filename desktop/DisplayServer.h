#pragma once

namespace Morvane::Desktop {

/// Whether the display server that the environment names answers. The windows' library ends the process where
/// it does not, so this is asked first.
bool displayAnswers();

}  // namespace Morvane::Desktop
