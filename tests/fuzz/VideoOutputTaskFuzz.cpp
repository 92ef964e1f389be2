// Any text becomes a record or is refused with a std::runtime_error.

#include <cstdlib>
#include <stdexcept>

#include "quicktime/VideoOutputTask.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const Morvane::QuickTime::VideoOutputTask task(text);
        if (text.front() != 'V') {
            std::abort();
        }
    } catch (const std::runtime_error&) {
    }
    return 0;
}
