// What it costs to turn a frame's four channels into interleaved pixels, beside a copy of the same samples.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "Kex/Image/Write.h"
#include "Kex/Image/Writer.h"
#include "benches/parts/MedianOf.h"

namespace {

using Kex::Image::LUT;

class SilentApplication : public Kex::Image::Application {
public:
    void error(const Kex::Image::Op&, const std::string&) override {}
    void warning(const Kex::Image::Op&, const std::string&) override {}
    void progress(const Kex::Image::Op&, double) override {}
    bool aborted(const Kex::Image::Op&) override { return false; }
};

class FrameWriter : public Kex::Image::Writer {
public:
    using Writer::Writer;

    /// One frame from planes to pixels, row by row and channel by channel, as the movie writer does it.
    void convert(float* pixels, const float* planes, int width, int height) const {
        const std::size_t row = static_cast<std::size_t>(width);
        const std::size_t plane = row * static_cast<std::size_t>(height);
        for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
            for (std::size_t z = 0; z < 4; ++z) {
                to_float(static_cast<int>(z), pixels + y * row * 4 + z, planes + z * plane + y * row, nullptr,
                         width, 4);
            }
        }
    }

    /// The same of codes: three planes of them, and alpha as floats.
    void convert(float* pixels, const Kex::Image::CodeTable::Code* codes, const Kex::Image::CodeTable& table,
                 int width, int height) const {
        const std::size_t rowSamples = static_cast<std::size_t>(width);
        const std::size_t plane = rowSamples * static_cast<std::size_t>(height);
        Kex::Image::Row row(0, width);
        row.fill(Kex::Image::Chan_Alpha, 1);
        for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
            for (std::size_t z = 0; z < 4; ++z) {
                const auto channel = static_cast<Kex::Image::Channel>(z + 1);
                if (z < 3) {
                    row.refer(channel, codes + z * plane + y * rowSamples, table);
                }
                to_float(static_cast<int>(z), pixels + y * rowSamples * 4 + z, row.samples(channel), nullptr,
                         width, 4);
            }
        }
    }

    void execute() override {}
};

/// Samples without a pattern, from a little below black to well above white.
std::vector<float> noise(std::size_t count) {
    std::vector<float> samples(count);
    unsigned state = 1;
    for (float& sample : samples) {
        state = state * 1664525U + 1013904223U;
        sample = static_cast<float>(state >> 8) / 0x1000000 * 2.1F - 0.1F;
    }
    return samples;
}

/// Ten bits each, as neighbours in a picture are: near each other.
std::vector<Kex::Image::CodeTable::Code> tenBits(std::size_t count) {
    std::vector<Kex::Image::CodeTable::Code> codes(count);
    std::mt19937 random(1);
    std::normal_distribution<double> grain(0, 12);
    for (std::size_t i = 0; i < count; ++i) {
        const double value = 500 + 400 * std::sin(static_cast<double>(i) * 0.003) + grain(random);
        codes[i] = static_cast<Kex::Image::CodeTable::Code>(std::clamp(value, 0.0, 1023.0));
    }
    return codes;
}

/// A node with the sRGB curve, and how long it takes in turns with a copy of the same samples as floats, so
/// that both see the same machine. Counters: the median of each in milliseconds, and conversion as a multiple
/// of the copy.
template <typename Convert>
void besideACopy(benchmark::State& state, Convert convert) {
    const int width = static_cast<int>(state.range(0));
    const int height = static_cast<int>(state.range(1));
    const std::vector<float> planes =
        noise(4 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    std::vector<float> pixels(planes.size());
    SilentApplication application;
    Kex::Image::Write node(application, "bench.mov");
    node.setLut(LUT::getLut(6));
    const FrameWriter writer(&node);

    std::vector<double> copies;
    std::vector<double> conversions;
    for ([[maybe_unused]] const auto turn : state) {
        copies.push_back(processorSeconds([&] {
            std::memcpy(pixels.data(), planes.data(), planes.size() * sizeof(float));
            benchmark::ClobberMemory();
        }));
        conversions.push_back(
            processorSeconds([&] { convert(writer, pixels.data(), planes.data(), width, height); }));
        state.SetIterationTime(conversions.back());
    }
    state.counters["memcpy_ms"] = medianOf(copies) * 1e3;
    state.counters["to_float_ms"] = medianOf(conversions) * 1e3;
    state.counters["times_memcpy"] = medianOf(conversions) / medianOf(copies);
}

void toFloat(benchmark::State& state) {
    besideACopy(state, [](const FrameWriter& writer, float* pixels, const float* planes, int width,
                          int height) { writer.convert(pixels, planes, width, height); });
}

void toFloatOfCodes(benchmark::State& state) {
    const std::vector<Kex::Image::CodeTable::Code> codes =
        tenBits(3 * static_cast<std::size_t>(state.range(0)) * static_cast<std::size_t>(state.range(1)));
    std::vector<float> linear(1024);
    for (std::size_t code = 0; code < linear.size(); ++code) {
        linear[code] = static_cast<float>(code) / 1023.0F;
    }
    const Kex::Image::CodeTable table(linear);
    besideACopy(state, [&](const FrameWriter& writer, float* pixels, const float*, int width, int height) {
        writer.convert(pixels, codes.data(), table, width, height);
    });
}

}  // namespace

BENCHMARK(toFloat)
    ->Args({1920, 1080})
    ->Args({3840, 2160})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(1);

BENCHMARK(toFloatOfCodes)
    ->Args({1920, 1080})
    ->Args({3840, 2160})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(1);

BENCHMARK_MAIN();
