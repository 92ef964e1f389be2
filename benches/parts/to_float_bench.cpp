// What it costs to turn a frame's four channels into interleaved pixels, beside a copy of the same samples.

#include <benchmark/benchmark.h>

#include <cstring>
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

/// Copy and conversion take turns, so that both see the same machine. Counters: the median of each in
/// milliseconds, and conversion as a multiple of the copy.
void toFloat(benchmark::State& state) {
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
            processorSeconds([&] { writer.convert(pixels.data(), planes.data(), width, height); }));
        state.SetIterationTime(conversions.back());
    }
    state.counters["memcpy_ms"] = medianOf(copies) * 1e3;
    state.counters["to_float_ms"] = medianOf(conversions) * 1e3;
    state.counters["times_memcpy"] = medianOf(conversions) / medianOf(copies);
}

}  // namespace

BENCHMARK(toFloat)
    ->Args({1920, 1080})
    ->Args({3840, 2160})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(1);

BENCHMARK_MAIN();
