#include "worker/output/ByteConversion.h"

namespace Morvane::Worker {

void floatsToBytes(const float* floats, std::size_t count, std::uint8_t* bytes) {
    for (std::size_t index = 0; index < count; ++index) {
        const float value = floats[index];
        const float aboveZero = value > 0.0F ? value : 0.0F;  // the comparison fails for what is not a number
        const float limited = aboveZero < 1.0F ? aboveZero : 1.0F;
        bytes[index] = static_cast<std::uint8_t>(static_cast<int>(limited * 255.0F + 0.5F));
    }
}

}  // namespace Morvane::Worker
