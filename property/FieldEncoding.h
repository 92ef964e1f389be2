#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

/// How texts cross the bridge: fields, escaped and joined by ":". The grammar stands in docs/protocol.md.
namespace Morvane::Property {

inline const std::string escapeString = "\\";
inline const std::string separatorString = ":";
inline const std::string quoteString = "\"";
/// Stands between the values of one property and is never escaped.
inline const std::string valueSeparatorString = ",";

/// One field as it stands in a text: backslashes and double quotes get a backslash before them; then the
/// field is put in double quotes if it holds `separator`. A zero byte is not protected: texts end there on
/// their way.
std::string escapeField(const std::string& text, const std::string& separator = separatorString);

/// The escaped fields with `separator` between neighbours. Fields are quoted where they hold ":",
/// deliberately also when `separator` is another one; every text of the bridge uses ":".
std::string joinFields(const std::vector<std::string>& fields,
                       const std::string& separator = separatorString);

/// The fields of `text` in order; an empty text has none. Gives back exactly what `escapeField` was given.
/// Throws boost::escaped_list_error ("unknown escape sequence", "cannot end with escape").
std::deque<std::string> splitFields(const std::string& text, const std::string& separator = separatorString);

/// The operation number in a request: the eight bytes after the kind letter, hexadecimal. Reads as a stream
/// does (leading blanks skipped, ends at the first other byte, clamps to 32 signed bits); -1 without a digit.
std::int32_t parseOpcode(const std::string& request);

}  // namespace Morvane::Property
