#pragma once

#include <cstdint>
#include <string>

#include "property/FieldEncoding.h"
#include "property/NumberText.h"

namespace Morvane::Property {

/// A request without arguments: the kind letter and the opcode in eight lower-case hexadecimal digits.
std::string requestHead(char kind, std::int32_t opcode);

inline std::string argumentText(const std::string& text) {
    return text;
}
inline std::string argumentText(const char* text) {
    return text;
}
template <typename T>
std::string argumentText(const T& value) {
    return numberText(value);
}

/// The text of a request: its head, then ":" and the escaped text of each argument.
/// `requestText('W', 5, 1920, 1080, 25.0f)` is "W00000005:1920:1080:25".
template <typename... Arguments>
std::string requestText(char kind, std::int32_t opcode, const Arguments&... arguments) {
    std::string text = requestHead(kind, opcode);
    ((text += separatorString + escapeField(argumentText(arguments))), ...);
    return text;
}

}  // namespace Morvane::Property
