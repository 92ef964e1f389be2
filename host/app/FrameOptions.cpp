#include "host/app/FrameOptions.h"

#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>
#include <map>

#include "host/images/FrameRange.h"

namespace Corvel {
namespace {

constexpr const char* group = "Frames";
constexpr int mostHandles = 1'000'000;

std::vector<int> parseFrames(const std::string& text) {
    try {
        return parseFrameRange(text);
    } catch (const BadFrameRange& error) {
        throw CLI::ValidationError("--frames", error.what());
    }
}

// "8" or "8,4": in front of the first frame, behind the last one.
void parseHandles(const std::string& text, FrameOrder& order) {
    int end = 0;
    const auto all = [&] { return end == static_cast<int>(text.size()); };
    const char* const chars = text.c_str();
    bool good = std::sscanf(chars, "%d%n", &order.before, &end) == 1 && all();
    order.after = order.before;
    good = good || (std::sscanf(chars, "%d,%d%n", &order.before, &order.after, &end) == 2 && all());
    if (!good || std::abs(order.before) > mostHandles || std::abs(order.after) > mostHandles) {
        throw CLI::ValidationError("--handles",
                                   fmt::format("\"{}\" is not a number of frames, or two such as 8,4", text));
    }
}

}  // namespace

void declareFrameOptions(CLI::App& app, const std::string& what, std::vector<int>& frames, Missing& missing) {
    app.add_option_function<std::string>(
           "--frames", [&frames](const std::string& text) { frames = parseFrames(text); },
           fmt::format(
               "Frames to {}: 1001-1100, 1-99x2, 1,5,10-20 (default: all from the first to the last found)",
               what))
        ->type_name("RANGE")
        ->group(group);
    const std::map<std::string, Missing> names{
        {"error", Missing::Error}, {"black", Missing::Black}, {"hold", Missing::Hold}};
    app.add_option("--missing", missing,
                   "What to do about missing frames: error, black, or hold the frame before (default: error)")
        ->transform(CLI::CheckedTransformer(names, CLI::ignore_case).description(""))
        ->type_name("WHAT")
        ->group(group);
}

void declareOrderOptions(CLI::App& app, FrameOrder& order) {
    app.add_option_function<std::string>(
           "--handles", [&order](const std::string& text) { parseHandles(text, order); },
           "Frames more before and after those of --frames, or before,after; negative: so many fewer")
        ->type_name("N[,M]")
        ->group(group);
    app.add_option("--step", order.step, "Only every Nth frame, counted from the first (default: 1)")
        ->check(CLI::Range(1, 1'000'000).description(""))
        ->type_name("N")
        ->group(group);
    app.add_flag("--reverse", order.reverse, "The last frame first")->group(group);
    app.add_option("--hold", order.hold, "Show each frame N times (default: 1)")
        ->check(CLI::Range(1, 10'000).description(""))
        ->type_name("N")
        ->group(group);
}

}  // namespace Corvel
