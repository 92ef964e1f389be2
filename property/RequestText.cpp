#include "property/RequestText.h"

#include <iomanip>
#include <sstream>

namespace Morvane::Property {

std::string requestHead(char kind, std::int32_t opcode) {
    std::ostringstream head;
    head.imbue(std::locale::classic());
    head << kind << std::hex << std::setw(8) << std::setfill('0') << opcode;
    return head.str();
}

}  // namespace Morvane::Property
