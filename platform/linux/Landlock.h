#pragma once

#include "platform/Confinement.h"

namespace Morvane::Platform {

/// The kernel's version of Landlock, 0 where it has none.
int landlockVersion();

/// Restricts the calling thread and what it starts to the files that `confinement` names, for good. REQUIRES:
/// a version of at least 1, no new privileges. Names of what does not exist are passed over.
void restrictFiles(const Confinement& confinement);

}  // namespace Morvane::Platform
