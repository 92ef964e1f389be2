#pragma once

#include "host/render/Bundle.h"

namespace Corvel {

/// Finds the application's bundle, checks that the helper can be started, and loads the plug-ins; one that
/// can't be loaded is warned of. Throws Failure (HelperFailed). For every command that makes a Write node.
Bundle startUp();

}  // namespace Corvel
