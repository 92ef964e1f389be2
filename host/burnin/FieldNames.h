#pragma once

#include <string>
#include <vector>

namespace Corvel {

/// The fields that templates may name. All functions are pure.

/// The field that is followed by a key: {meta:KEY}.
constexpr const char* metadataField = "meta";

/// All of them but {meta}: those that the render knows, and those that people fill in with --field and that
/// are empty otherwise.
const std::vector<std::string>& fieldNames();

/// Whether the field's value is a whole number.
bool isNumberField(const std::string& field);
/// Whether the field's value is a moment, in seconds since 1970.
bool isTimeField(const std::string& field);

}  // namespace Corvel
