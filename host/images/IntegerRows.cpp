#include "host/images/IntegerRows.h"

#include <algorithm>
#include <cstring>
#include <functional>

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
    prepareTable(highestOf(stored.form), curve);
}

void IntegerRows::prepareTable(unsigned highestSample, const LUT& curve) {
    if (highest == highestSample && curveOfTable == curve.type()) {
        return;
    }
    highest = highestSample;
    curveOfTable = curve.type();
    table.resize(std::size_t{highest} + 1);
    for (unsigned sample = 0; sample <= highest; ++sample) {
        table[sample] = static_cast<float>(sample) / static_cast<float>(highest);
    }
    if (curve.type() != 0) {
        curve.toLinear(table.data(), table.data(), table.size(), 1);
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
    const float* const values = table.data();
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
    for (std::size_t x = 0; x < count; ++x) {
        alpha[x] = static_cast<float>(samples(first + x, source)) / static_cast<float>(highest);
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
