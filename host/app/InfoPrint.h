#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace Corvel {

/// How `corvel info` prints, whatever it is about.

using InfoJson = nlohmann::ordered_json;
using InfoRows = std::vector<std::pair<std::string, std::string>>;

/// Null for what the file doesn't say.
InfoJson textOrNull(const std::string& text);

/// The number in the fewest digits, not those of its nearest double; null for what is no number.
InfoJson numberOrNull(double value);

/// Rows of names and values, aligned, on standard output, under a title and an empty line unless it is empty.
void printRows(const std::string& title, const InfoRows& rows);

void printJson(const InfoJson& document);

}  // namespace Corvel
