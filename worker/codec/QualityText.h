#pragma once

#include "worker/codec/CodecTable.h"

#include <string>

namespace Morvane::Worker {

/// What the six qualities of `codec` mean, for a person: "Min: quantiser 24; Low: …", or one sentence where
/// quality makes no difference.
std::string describeQualities(const Codec& codec);

}  // namespace Morvane::Worker
