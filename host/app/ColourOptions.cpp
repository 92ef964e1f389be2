#include "host/app/ColourOptions.h"

#include <fmt/format.h>

#include <string>
#include <vector>

namespace Corvel {
namespace {

std::pair<std::string, std::string> parseVariable(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        throw CLI::ValidationError("--context", fmt::format("\"{}\" is not of the form NAME=VALUE", text));
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

}  // namespace

void declareColourOptions(CLI::App& app, ColourRequest& request) {
    constexpr const char* group = "Colour management";
    const auto declare = [&](const char* name, std::string& value, const char* help, const char* type) {
        app.add_option(name, value, help)->type_name(type)->group(group);
    };
    declare(
        "--ocio", request.config,
        "OpenColorIO configuration; corvel for the one that comes with it (default: that of the variable OCIO, "
        "else corvel). Any option of this group turns colour management on",
        "FILE");
    declare("--input-space", request.inputSpace,
            "Colour space of the input (default: by the configuration's file rules, else what the files say)",
            "NAME");
    declare("--display", request.display,
            "Display whose values the movie gets; its tags say so (default: the configuration's first)",
            "NAME");
    declare("--view", request.view, "View of the display (default: the display's first)", "NAME");
    declare("--output-space", request.outputSpace, "Colour space of the movie, instead of a display", "NAME");
    declare("--looks", request.looks, "Looks instead of the view's own, such as \"+warm, -grain\"", "NAMES");
    app.add_option_function<std::vector<std::string>>(
           "--context",
           [&request](const std::vector<std::string>& texts) {
               for (const std::string& text : texts) {
                   request.context.push_back(parseVariable(text));
               }
           },
           "A variable of the configuration, such as SHOT=010; may be given several times")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false)
        ->group(group);
}

}  // namespace Corvel
