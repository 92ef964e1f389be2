#include "property/FieldEncoding.h"

#include <boost/tokenizer.hpp>
#include <sstream>

namespace Morvane::Property {

namespace {

std::string withEscapeBefore(const std::string& text, const std::string& special) {
    std::string escaped = text;
    const std::string replacement = escapeString + special;
    for (auto position = escaped.find(special); position != std::string::npos;
         position = escaped.find(special, position + replacement.size())) {
        escaped.replace(position, special.size(), replacement);
    }
    return escaped;
}

}  // namespace

std::string escapeField(const std::string& text, const std::string& separator) {
    // Backslashes first: the ones that come before quotes must not be doubled again.
    std::string field = withEscapeBefore(withEscapeBefore(text, escapeString), quoteString);
    if (field.find(separator) != std::string::npos) {
        field = quoteString + field + quoteString;
    }
    return field;
}

std::string joinFields(const std::vector<std::string>& fields, const std::string& separator) {
    std::string joined;
    for (const std::string& field : fields) {
        if (&field != &fields.front()) {
            joined += separator;
        }
        // Deliberately looks for ":" and not for the separator given.
        joined += escapeField(field, separatorString);
    }
    return joined;
}

std::deque<std::string> splitFields(const std::string& text, const std::string& separator) {
    using Separator = boost::escaped_list_separator<char>;
    std::deque<std::string> fields;
    // One field after the other: two iterators before a last, empty field compare equal, so a range is cut
    // short.
    for (const std::string& field :
         boost::tokenizer<Separator>(text, {escapeString, separator, quoteString})) {
        fields.push_back(field);
    }
    return fields;
}

std::int32_t parseOpcode(const std::string& request) {
    constexpr std::size_t kindLength = 1;
    constexpr std::size_t opcodeLength = 8;
    if (request.size() <= kindLength) {
        return -1;
    }
    std::istringstream stream(request.substr(kindLength, opcodeLength));
    stream.imbue(std::locale::classic());
    std::int32_t opcode = 0;
    stream >> std::hex >> opcode;
    const bool unreadable = stream.fail() && opcode == 0;
    return unreadable ? -1 : opcode;
}

}  // namespace Morvane::Property
