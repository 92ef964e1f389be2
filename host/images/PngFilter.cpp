#include "host/images/PngFilter.h"

#include <cstring>

namespace Corvel {
namespace {

// The bytes of one pixel side by side, for which every processor has a register: pixels come one by one,
// since each needs the one to the left of it. What lies past the pixel's end means nothing.
using Bytes = std::uint8_t __attribute__((vector_size(pngBytesBeyond)));
using Words = std::int16_t __attribute__((vector_size(2 * pngBytesBeyond)));

Words magnitudeOf(Words words) {
    return words < 0 ? -words : words;
}

// What each filter predicts from the pixels to the left, above, and above to the left.
struct Sub {
    static Words predict(Words left, Words, Words) { return left; }
};

struct Average {
    static Words predict(Words left, Words above, Words) { return (left + above) >> 1; }
};

struct Paeth {
    static Words predict(Words left, Words above, Words corner) {
        const Words toLeft = magnitudeOf(above - corner);
        const Words toAbove = magnitudeOf(left - corner);
        const Words toCorner = magnitudeOf((above - corner) + (left - corner));
        const Words nearest = toLeft < toAbove ? toLeft : toAbove;
        const Words nearer = toLeft <= toAbove ? left : above;
        return nearest <= toCorner ? nearer : corner;
    }
};

Words load(const std::uint8_t* at) {
    Bytes bytes;
    std::memcpy(&bytes, at, sizeof bytes);
    return __builtin_convertvector(bytes, Words);
}

template <std::size_t pixelBytes>
void store(Words words, std::uint8_t* at) {
    const Bytes bytes = __builtin_convertvector(words, Bytes);
    std::memcpy(at, &bytes, pixelBytes);
}

template <class Filter, std::size_t pixelBytes>
void undo(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) {
    Words left{};
    Words corner{};
    for (std::size_t x = 0; x < bytes; x += pixelBytes) {
        const Words up = load(above + x);
        left = (load(row + x) + Filter::predict(left, up, corner)) & 255;
        corner = up;
        store<pixelBytes>(left, row + x);
    }
}

template <class Filter>
void undo(std::size_t pixelBytes, std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) {
    switch (pixelBytes) {
        case 1:
            return undo<Filter, 1>(row, above, bytes);
        case 2:
            return undo<Filter, 2>(row, above, bytes);
        case 3:
            return undo<Filter, 3>(row, above, bytes);
        case 4:
            return undo<Filter, 4>(row, above, bytes);
        case 6:
            return undo<Filter, 6>(row, above, bytes);
        default:
            return undo<Filter, 8>(row, above, bytes);
    }
}

// Here no pixel needs the one before.
void undoUp(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) {
    std::size_t x = 0;
    for (; x + sizeof(Bytes) <= bytes; x += sizeof(Bytes)) {
        Bytes sum, up;
        std::memcpy(&sum, row + x, sizeof sum);
        std::memcpy(&up, above + x, sizeof up);
        sum += up;
        std::memcpy(row + x, &sum, sizeof sum);
    }
    for (; x < bytes; ++x) {
        row[x] = static_cast<std::uint8_t>(row[x] + above[x]);
    }
}

}  // namespace

bool undoPngFilter(std::uint8_t filter, std::size_t pixelBytes, std::uint8_t* row, const std::uint8_t* above,
                   std::size_t bytes) {
    switch (filter) {
        case 0:
            return true;
        case 1:
            undo<Sub>(pixelBytes, row, above, bytes);
            return true;
        case 2:
            undoUp(row, above, bytes);
            return true;
        case 3:
            undo<Average>(pixelBytes, row, above, bytes);
            return true;
        case 4:
            undo<Paeth>(pixelBytes, row, above, bytes);
            return true;
        default:
            return false;
    }
}

}  // namespace Corvel
