// Any text becomes a record or is refused with a std::runtime_error.

#include <cstdlib>
#include <stdexcept>

#include "quicktime/QuickTimeCodecTask.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const Morvane::QuickTime::QuickTimeCodecReadTask task(text);
        if (text.front() != 'R') {
            std::abort();
        }
    } catch (const std::runtime_error&) {
    }
    return 0;
}
