// Every number becomes a text, and a non-drop text of one day comes back as the number.

#include <cstdlib>
#include <cstring>

#include "timecode/Timecode.h"

using namespace Morvane::Timecode;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    struct {
        std::uint32_t word;
        std::int64_t frame;
        std::int64_t offset;
        std::uint8_t mode;
    } __attribute__((packed)) chosen{};
    if (size < sizeof chosen) {
        return 0;
    }
    std::memcpy(&chosen, data, sizeof chosen);
    const FrameRate rate(chosen.word & 0x7fffffffu, chosen.word >> 31 != 0);
    formatTimecode(chosen.frame, rate, static_cast<Mode>(chosen.mode % 6), (chosen.mode & 0x80) != 0,
                   chosen.offset);

    const std::int64_t aDay = 24 * 3600 * static_cast<std::int64_t>(rate.nominalRate());
    if (chosen.frame < 0 || chosen.frame >= aDay) {
        return 0;
    }
    const std::string text = formatTimecode(chosen.frame, rate, Mode::NonDrop);
    return parseTimecode(text, rate, Mode::NonDrop) == chosen.frame ? 0 : (std::abort(), 0);
}
