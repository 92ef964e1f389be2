#include "host/images/IntegerRows.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "host/images/CodeKernels.h"
#include "host/images/CodeTables.h"

namespace Corvel {
namespace {

using Kex::Image::LUT;

// One sample out of a row: of pixel `x`, channel `channel`.
template <typename Sample, bool swapped>
struct Interleaved {
    const unsigned char* row;
    std::size_t channels;

    unsigned operator()(std::size_t x, std::size_t channel) const {
        Sample sample = 0;
        std::memcpy(&sample, row + (x * channels + channel) * sizeof(Sample), sizeof sample);
        return swapped ? static_cast<unsigned>(__builtin_bswap16(sample)) : sample;
    }
};

template <bool swapped>
struct TenBitWords {
    const unsigned char* row;

    unsigned operator()(std::size_t x, std::size_t channel) const {
        std::uint32_t word = 0;
        std::memcpy(&word, row + x * sizeof word, sizeof word);
        return (swapped ? __builtin_bswap32(word) : word) >> (22 - 10 * channel) & 1023;
    }
};

unsigned highestOf(SampleForm form) {
    switch (form) {
        case SampleForm::Bytes:
            return 255;
        case SampleForm::Words:
        case SampleForm::SwappedWords:
            return 65535;
        default:
            return 1023;
    }
}

}  // namespace

void IntegerRows::begin(const IntegerPixels& stored, const LUT& curve, const Window& display,
                        Picture& picture) {
    pixels = stored;
    displayed = display;
    shown = overlapOf(stored.window, display);
    target = &picture;
    table = &wholeNumbers(highestOf(stored.form), curve);
    const bool hasAlpha = stored.layout.alpha >= 0;
    if (picture.allowsCodes() && hasThreeColours() && !hasAlpha && shown == display) {
        picture.resetCodes(display.width, display.height, 3, *table);
        return;
    }
    picture.reset(display.width, display.height, hasAlpha ? 4 : 3);
    if (shown != display) {
        picture.clear();
    }
}

// Three samples a pixel, each of another colour.
bool IntegerRows::hasThreeColours() const {
    const ChannelLayout& layout = pixels.layout;
    return pixels.channels == 3 && layout.red != layout.green && layout.green != layout.blue &&
           layout.blue != layout.red;
}

void IntegerRows::placeCodes(const unsigned char* samples, int y) {
    const auto count = static_cast<std::size_t>(shown.width);
    const auto first = static_cast<std::size_t>(shown.x - pixels.window.x);
    Picture::Code* planes[3] = {};
    planes[pixels.layout.red] = target->codeRow(0, y);
    planes[pixels.layout.green] = target->codeRow(1, y);
    planes[pixels.layout.blue] = target->codeRow(2, y);
    switch (pixels.form) {
        case SampleForm::Bytes:
            return splitBytes(samples + 3 * first, count, planes);
        case SampleForm::Words:
        case SampleForm::SwappedWords:
            return splitWords(samples + 6 * first, pixels.form == SampleForm::SwappedWords, count, planes);
        case SampleForm::TenBits:
        case SampleForm::SwappedTenBits:
            return splitTenBits(samples + 4 * first, pixels.form == SampleForm::SwappedTenBits, count,
                                planes);
    }
}

template <class Samples>
void IntegerRows::placeAs(const Samples& samples, int y) {
    const auto count = static_cast<std::size_t>(shown.width);
    const auto first = static_cast<std::size_t>(shown.x - pixels.window.x);
    const auto rowOf = [&](int channel) {
        return target->row(channel, y - displayed.y) + (shown.x - displayed.x);
    };
    const auto redSource = static_cast<std::size_t>(pixels.layout.red);
    const auto greenSource = static_cast<std::size_t>(pixels.layout.green);
    const auto blueSource = static_cast<std::size_t>(pixels.layout.blue);
    float* const reds = rowOf(0);
    float* const greens = rowOf(1);
    float* const blues = rowOf(2);
    const float* const values = table->linear();
    // All channels of a pixel at once, and none stored before all are looked up: what stands together in the
    // file is read together.
    for (std::size_t x = 0; x < count; ++x) {
        const float red = values[samples(first + x, redSource)];
        const float green = values[samples(first + x, greenSource)];
        const float blue = values[samples(first + x, blueSource)];
        reds[x] = red;
        greens[x] = green;
        blues[x] = blue;
    }
    if (!target->hasAlpha()) {
        return;
    }
    float* const alpha = rowOf(3);
    const auto source = static_cast<std::size_t>(pixels.layout.alpha);
    const auto highest = static_cast<float>(table->size() - 1);
    for (std::size_t x = 0; x < count; ++x) {
        alpha[x] = static_cast<float>(samples(first + x, source)) / highest;
    }
    for (int channel = 0; channel < 3 && pixels.straightAlpha; ++channel) {
        std::transform(alpha, alpha + count, rowOf(channel), rowOf(channel), std::multiplies<>());
    }
}

void IntegerRows::place(int y, const void* samples) {
    const int row = pixels.window.y + y;
    if (row < shown.y || row >= shown.y + shown.height) {
        return;
    }
    const auto* const bytes = static_cast<const unsigned char*>(samples);
    if (target->table() != nullptr) {
        placeCodes(bytes, row - displayed.y);
        return;
    }
    const auto channels = static_cast<std::size_t>(pixels.channels);
    switch (pixels.form) {
        case SampleForm::Bytes:
            return placeAs(Interleaved<std::uint8_t, false>{bytes, channels}, row);
        case SampleForm::Words:
            return placeAs(Interleaved<std::uint16_t, false>{bytes, channels}, row);
        case SampleForm::SwappedWords:
            return placeAs(Interleaved<std::uint16_t, true>{bytes, channels}, row);
        case SampleForm::TenBits:
            return placeAs(TenBitWords<false>{bytes}, row);
        case SampleForm::SwappedTenBits:
            return placeAs(TenBitWords<true>{bytes}, row);
    }
}

}  // namespace Corvel
