#include "host/app/FrameOptions.h"

#include <fmt/format.h>

#include <map>

#include "host/images/FrameRange.h"

namespace Corvel {
namespace {

std::vector<int> parseFrames(const std::string& text) {
    try {
        return parseFrameRange(text);
    } catch (const BadFrameRange& error) {
        throw CLI::ValidationError("--frames", error.what());
    }
}

}  // namespace

void declareFrameOptions(CLI::App& app, const std::string& what, std::vector<int>& frames, Missing& missing) {
    constexpr const char* group = "Frames";
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

}  // namespace Corvel
