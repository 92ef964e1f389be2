// Any text reads as a property list or is refused. What was read has one value a property, and comes back
// from its own text with the same names and types.

#include <boost/tokenizer.hpp>
#include <cstdlib>

#include "property/PropertyList.h"

using namespace Morvane::Property;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    PropertyList list;
    try {
        readPropertyList(std::string(reinterpret_cast<const char*>(data), size), list);
    } catch (const boost::escaped_list_error&) {
        return list.empty() ? 0 : (std::abort(), 0);
    }
    PropertyList again;
    readPropertyList(writePropertyList(list), again);
    if (again.size() != list.size()) {
        std::abort();
    }
    for (auto first = list.begin(), second = again.begin(); first != list.end(); ++first, ++second) {
        if ((*first)->name != (*second)->name || (*first)->type != (*second)->type || (*first)->size() != 1) {
            std::abort();
        }
    }
    return 0;
}
