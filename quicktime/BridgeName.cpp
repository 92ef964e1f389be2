#include "quicktime/BridgeName.h"

#include <uuid/uuid.h>

#include <algorithm>

namespace Morvane::QuickTime {

std::string makeBridgeName() {
    uuid_t identifier;
    char text[37];
    uuid_generate(identifier);
    uuid_unparse(identifier, text);
    std::string name = text;
    name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
    return name;
}

}  // namespace Morvane::QuickTime
