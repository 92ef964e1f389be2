// The first bytes choose rate, mode and offset, the rest is the text. No text may do harm, and the number of
// fields stays within its bounds.

#include <cstdlib>
#include <cstring>

#include "timecode/Timecode.h"

using namespace Morvane::Timecode;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    struct {
        std::uint32_t word;
        std::int64_t offset;
        std::uint8_t mode;
    } __attribute__((packed)) chosen{};
    if (size < sizeof chosen) {
        return 0;
    }
    std::memcpy(&chosen, data, sizeof chosen);
    const std::string text(reinterpret_cast<const char*>(data) + sizeof chosen, size - sizeof chosen);
    const FrameRate rate(chosen.word & 0x7fffffffu, chosen.word >> 31 != 0);
    std::int32_t fields = -1;
    parseTimecode(text, rate, static_cast<Mode>(chosen.mode % 6), chosen.offset, &fields);
    return fields >= 0 && fields <= 4 ? 0 : (std::abort(), 0);
}
