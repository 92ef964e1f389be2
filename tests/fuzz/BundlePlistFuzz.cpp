// Any file may stand where a bundle's property list should.

#include <cstdint>
#include <string>

#include "platform/linux/Bundles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Morvane::Platform::identifierInPlist(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
