#pragma once

#include <string>
#include <utility>
#include <vector>

namespace Morvane::Worker {

/// Settings as they stand in a text: key and value, each key once.
using SettingPairs = std::vector<std::pair<std::string, std::string>>;

/// Reads `key=value:key=value`. Backslash and single quotes protect characters as libav has it everywhere;
/// blanks around keys and values are dropped. Of a key that comes twice only the later value counts. Throws
/// StatusError (NotSupportedByCodec) for a text that is not of this form or longer than 65536 bytes.
SettingPairs parseSettingPairs(const std::string& text);

/// The text that `parseSettingPairs` reads back as `pairs`.
std::string formatSettingPairs(const SettingPairs& pairs);

}  // namespace Morvane::Worker
