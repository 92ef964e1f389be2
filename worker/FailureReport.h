#pragma once

#include <string>

#include "worker/Status.h"

namespace Morvane::Worker {

/// Writes the one line that a failure gets on standard error, which is the host's:
/// "CorvelQuickTimeHelper-32: cannot write /shots/a.mov: No space left on device (-34)". The whole line
/// leaves in one write, so that lines of several workers do not mix. Any thread.
void reportFailure(const std::string& reason, Status status) noexcept;

/// The same for what a person should know although the request succeeds; such a line has no code.
void reportRemark(const std::string& remark) noexcept;

}  // namespace Morvane::Worker
