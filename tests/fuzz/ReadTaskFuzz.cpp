// Any text becomes a record or is refused with a std::runtime_error.

#include "quicktime/QuickTimeCodecTask.h"
#include "tests/fuzz/TaskInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Morvane::Fuzz::makeTask<Morvane::QuickTime::QuickTimeCodecReadTask>(data, size, 'R');
    return 0;
}
