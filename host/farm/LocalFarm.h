#pragma once

#include <vector>

#include "host/farm/Farm.h"

namespace Corvel {

/// Renders the chunks `missing` as processes of this machine, some at the same time, each again where it
/// fails and may, and joins. An interrupt ends them; what is finished stays. REQUIRES the lock. Blocks.
Exit runLocalFarm(const FarmPlace& place, const FarmState& state, const std::vector<int>& missing,
                  Reporter& reporter);

}  // namespace Corvel
