#pragma once

#include <memory>
#include <string>

#include "worker/bridge/Mode.h"

namespace Morvane::Worker {

/// The mode that the worker's second argument names; null where there is none of that name.
std::unique_ptr<Mode> makeMode(const std::string& word);

/// Whether that mode decodes files whose makers nobody knows, in the process itself, and needs nothing else
/// but the bridge: then it runs confined.
bool isConfinedMode(const std::string& word);

/// All mode words, "|" between them.
std::string modeWords();

}  // namespace Morvane::Worker
