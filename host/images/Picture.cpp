#include "host/images/Picture.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace Corvel {

Window overlapOf(const Window& one, const Window& other) {
    const int left = std::max(one.x, other.x);
    const int top = std::max(one.y, other.y);
    const std::int64_t right = std::min(std::int64_t{one.x} + one.width, std::int64_t{other.x} + other.width);
    const std::int64_t bottom =
        std::min(std::int64_t{one.y} + one.height, std::int64_t{other.y} + other.height);
    if (right <= left || bottom <= top) {
        return {left, top, 0, 0};
    }
    return {left, top, static_cast<int>(right - left), static_cast<int>(bottom - top)};
}

bool isPictureSize(int width, int height) {
    return width > 0 && height > 0 && 16.0 * width * height <= std::numeric_limits<std::int32_t>::max();
}

void Picture::reset(int width, int height, int channels) {
    resetSamples(width, height, channels, nullptr);
}

void Picture::resetCodes(int width, int height, int channels, const Kex::Image::CodeTable& table) {
    resetSamples(width, height, channels, &table);
}

void Picture::resetSamples(int width, int height, int channels, const Kex::Image::CodeTable* table) {
    table_ = table;
    const std::size_t needed = bytes(width, height, channels) / sizeof(float) * sampleBytes();
    if (needed > capacity) {
        memory.reset();
        capacity = 0;
        memory = Morvane::Platform::allocateLarge(needed);
        capacity = needed;
    }
    width_ = width;
    height_ = height;
    channels_ = channels;
}

void Picture::clear() {
    // 0 is all bits 0, of floats as of codes.
    std::fill_n(memory.get(), planeStride() * static_cast<std::size_t>(channels_) * sampleBytes(),
                std::byte{0});
}

std::size_t Picture::bytes(int width, int height, int channels) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
           static_cast<std::size_t>(channels) * sizeof(float);
}

}  // namespace Corvel
