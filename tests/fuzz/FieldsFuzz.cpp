// Any text splits into fields or is refused, and what was split and joined again splits into the same fields.

#include <boost/tokenizer.hpp>
#include <cstdlib>

#include "property/FieldEncoding.h"

using namespace Morvane::Property;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    parseOpcode(text);
    std::deque<std::string> fields;
    try {
        fields = splitFields(text);
    } catch (const boost::escaped_list_error&) {
        return 0;
    }
    const std::string joined = joinFields({fields.begin(), fields.end()});
    // A single empty field cannot be told from no field.
    if (!joined.empty() && splitFields(joined) != fields) {
        std::abort();
    }
    return 0;
}
