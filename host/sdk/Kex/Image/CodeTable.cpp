#include "Kex/Image/CodeTable.h"

#include <bit>
#include <cstring>
#include <utility>

namespace Kex::Image {

CodeTable::CodeTable(std::vector<float> linear) : values(std::move(linear)) {}

const float* CodeTable::stored(const LUT& curve) const {
    OfCurve& made = curves[static_cast<std::size_t>(curve.type())];
    std::call_once(made.once, [&] {
        made.values.resize(values.size());
        curve.toStored(made.values.data(), values.data(), values.size(), 1);
    });
    return made.values.data();
}

void lookUp(float* to, const CodeTable::Code* codes, const float* values, std::size_t count,
            std::size_t stride) {
    static_assert(std::endian::native == std::endian::little,
                  "the first of four codes is in the lowest bits");
    std::size_t i = 0;
    // Four codes are one load, and none of their values waits for another one's store.
    for (; i + 4 <= count; i += 4) {
        std::uint64_t four = 0;
        std::memcpy(&four, codes + i, sizeof four);
        const float first = values[four & 0xFFFF];
        const float second = values[four >> 16 & 0xFFFF];
        const float third = values[four >> 32 & 0xFFFF];
        const float fourth = values[four >> 48];
        float* const target = to + i * stride;
        target[0] = first;
        target[stride] = second;
        target[2 * stride] = third;
        target[3 * stride] = fourth;
    }
    for (; i < count; ++i) {
        to[i * stride] = values[codes[i]];
    }
}

}  // namespace Kex::Image
