#pragma once

#include "worker/codec/Settings.h"

#include <string>
#include <vector>

namespace Morvane::Worker {

/// How a settings key describes itself: its kind, what it can be, and one sentence.
struct SettingDescription {
    std::string key;
    std::string type;    ///< "choice", "integer", "number", "ratio" or "text"
    std::string values;  ///< "a|b|c", "lowest|highest" or, for threads, "auto|1..256"; empty: anything
    std::string help;
};

/// Every key that the codec of `settings` has, but for `meta.KEY`, in the order of the normalised text.
std::vector<SettingDescription> describeSettings(const Settings& settings);

}  // namespace Morvane::Worker
