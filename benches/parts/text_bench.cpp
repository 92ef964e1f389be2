// Texts of the bridge and time codes: how many a second.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "property/FieldEncoding.h"
#include "property/RequestText.h"
#include "timecode/Timecode.h"

namespace {

using namespace Morvane;

const std::vector<std::string> plainFields{"/renders/shot_010/comp_v012.mov", "1", "24", "0.5"};
const std::vector<std::string> awkwardFields{R"(C:\renders\"new"\shot.mov)", "a:b:c", "", "ends with \\"};

void escape(benchmark::State& state, const std::vector<std::string>& fields) {
    for ([[maybe_unused]] const auto turn : state) {
        benchmark::DoNotOptimize(Property::joinFields(fields));
    }
}

void split(benchmark::State& state, const std::vector<std::string>& fields) {
    const std::string text = Property::joinFields(fields);
    for ([[maybe_unused]] const auto turn : state) {
        benchmark::DoNotOptimize(Property::splitFields(text));
    }
}

void frameRequest(benchmark::State& state) {
    std::int32_t frame = 0;
    for ([[maybe_unused]] const auto turn : state) {
        benchmark::DoNotOptimize(Property::requestText('W', 1, ++frame, false));
    }
}

const Timecode::FrameRate ntsc(30, true);

void formatTimecode(benchmark::State& state) {
    std::int64_t frame = 0;
    for ([[maybe_unused]] const auto turn : state) {
        benchmark::DoNotOptimize(Timecode::formatTimecode(++frame, ntsc, Timecode::Mode::Drop));
    }
}

void parseTimecode(benchmark::State& state) {
    const std::string text = Timecode::formatTimecode(1'234'567, ntsc, Timecode::Mode::Drop);
    for ([[maybe_unused]] const auto turn : state) {
        benchmark::DoNotOptimize(Timecode::parseTimecode(text, ntsc, Timecode::Mode::Drop));
    }
}

}  // namespace

BENCHMARK_CAPTURE(escape, plain, plainFields);
BENCHMARK_CAPTURE(escape, awkward, awkwardFields);
BENCHMARK_CAPTURE(split, plain, plainFields);
BENCHMARK_CAPTURE(split, awkward, awkwardFields);
BENCHMARK(frameRequest);
BENCHMARK(formatTimecode);
BENCHMARK(parseTimecode);

BENCHMARK_MAIN();
