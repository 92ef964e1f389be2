#include "platform/LargeCopy.h"

#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Morvane::Platform {

#ifdef __SSE2__

namespace {

constexpr std::size_t lineBytes = 64;

/// REQUIRES: `target` is the beginning of a line.
void copyLinePastCaches(std::byte* target, const std::byte* source) {
    const auto* const from = reinterpret_cast<const __m128i*>(source);
    auto* const to = reinterpret_cast<__m128i*>(target);
    const __m128i quarters[] = {_mm_loadu_si128(from), _mm_loadu_si128(from + 1), _mm_loadu_si128(from + 2),
                                _mm_loadu_si128(from + 3)};
    _mm_stream_si128(to, quarters[0]);
    _mm_stream_si128(to + 1, quarters[1]);
    _mm_stream_si128(to + 2, quarters[2]);
    _mm_stream_si128(to + 3, quarters[3]);
}

/// REQUIRES: bytes >= lineBytes.
void copyPastCaches(std::byte* target, const std::byte* source, std::size_t bytes) {
    std::size_t done = (lineBytes - reinterpret_cast<std::uintptr_t>(target) % lineBytes) % lineBytes;
    std::memcpy(target, source, done);
    for (; done + lineBytes <= bytes; done += lineBytes) {
        copyLinePastCaches(target + done, source + done);
    }
    std::memcpy(target + done, source + done, bytes - done);
    // Stores past the caches may come after later ones otherwise, also that which says that all is there.
    _mm_sfence();
}

}  // namespace

void copyLarge(void* target, const void* source, std::size_t bytes) {
    if (bytes < largerThanCaches) {
        std::memcpy(target, source, bytes);
    } else {
        copyPastCaches(static_cast<std::byte*>(target), static_cast<const std::byte*>(source), bytes);
    }
}

#else

void copyLarge(void* target, const void* source, std::size_t bytes) {
    std::memcpy(target, source, bytes);
}

#endif

}  // namespace Morvane::Platform
