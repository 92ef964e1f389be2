#pragma once

namespace Morvane::QuickTime {

/// The worker application, from the host bundle's content folder, for all three modes.
inline constexpr const char* workerPath =
    "../Resources/CorvelQuickTimeHelper-32.app/CorvelQuickTimeHelper-32";

}  // namespace Morvane::QuickTime
