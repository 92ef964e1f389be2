// From float pixels to the codecs' pictures on one thread, beside one pass over the same floats.

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "benches/parts/MedianOf.h"
#include "worker/picture/PictureConverter.h"
#include "worker/picture/PicturePool.h"

namespace {

using namespace Morvane::Worker;

EncodingPlan planOf(const char* codec, bool alpha, int width, int height) {
    EncodingRequest request;
    request.settings = Settings::parse("threads=1", *findCodec(codec));
    request.width = width;
    request.height = height;
    request.quality = 4;
    request.hasAlpha = alpha;
    return planEncoding(request);
}

std::vector<float> noise(std::size_t count) {
    std::vector<float> samples(count);
    unsigned state = 1;
    for (float& sample : samples) {
        state = state * 1664525U + 1013904223U;
        sample = static_cast<float>(state >> 8) / 0x1000000;
    }
    return samples;
}

/// Reads every float once, from memory: several sums, so that none waits for the one before it.
float readOnce(const std::vector<float>& samples) {
    constexpr std::size_t sums = 64;
    float sum[sums] = {};
    for (std::size_t i = 0; i + sums <= samples.size(); i += sums) {
        for (std::size_t lane = 0; lane < sums; ++lane) {
            sum[lane] += samples[i + lane];
        }
    }
    float all = 0;
    for (const float one : sum) {
        all += one;
    }
    return all;
}

/// Counters: medians in milliseconds, and the conversion as a multiple of one pass that reads the floats.
void convert(benchmark::State& state, const char* codec, bool alpha) {
    const int width = static_cast<int>(state.range(0));
    const int height = static_cast<int>(state.range(1));
    const EncodingPlan plan = planOf(codec, alpha, width, height);
    const std::vector<float> pixels =
        noise(4 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    PicturePool pool(plan);
    const FramePointer target = pool.take();
    PictureConverter converter(plan);
    std::vector<double> passes, conversions;
    for ([[maybe_unused]] const auto turn : state) {
        passes.push_back(processorSeconds([&] { benchmark::DoNotOptimize(readOnce(pixels)); }));
        conversions.push_back(processorSeconds([&] { converter.convert(pixels.data(), *target); }));
        state.SetIterationTime(conversions.back());
    }
    state.counters["pass_ms"] = medianOf(passes) * 1e3;
    state.counters["convert_ms"] = medianOf(conversions) * 1e3;
    state.counters["times_pass"] = medianOf(conversions) / medianOf(passes);
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->Args({1920, 1080})->Args({3840, 2160})->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1);
}

}  // namespace

BENCHMARK_CAPTURE(convert, ProRes_422_10_bit, "apch", false)->Apply(sizes);
BENCHMARK_CAPTURE(convert, ProRes_4444_10_bit_alpha, "ap4h", true)->Apply(sizes);
BENCHMARK_CAPTURE(convert, PNG_RGB_16_bit, "png ", false)->Apply(sizes);
BENCHMARK_CAPTURE(convert, Motion_JPEG_420_8_bit, "mjpa", false)->Apply(sizes);

BENCHMARK_MAIN();
