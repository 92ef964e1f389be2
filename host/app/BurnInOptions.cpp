#include "host/app/BurnInOptions.h"

#include <fmt/format.h>

#include "host/burnin/Template.h"

namespace Corvel {
namespace {

constexpr const char* group = "Burn-ins";

void addField(const std::string& text, BurnInRequest& request) {
    const std::size_t equals = text.find('=');
    const std::string name = text.substr(0, equals);
    if (equals == std::string::npos || name.empty() || name.find_first_of("{}:") != std::string::npos) {
        throw CLI::ValidationError("--field", fmt::format("\"{}\" is not of the form NAME=VALUE", text));
    }
    request.fields.emplace_back(name, text.substr(equals + 1));
}

}  // namespace

void declareBurnInOptions(CLI::App& app, BurnInRequest& request) {
    app.add_option(
           "--slate", request.slate,
           fmt::format("A frame in front of the first one that says what follows: {}, or a template in "
                       "JSON; the time code and the sound stay with their pictures",
                       slateNames()))
        ->type_name("NAME|FILE")
        ->group(group);
    app.add_option("--burnin", request.burnIn,
                   fmt::format("What is written over the pictures: {}, or a template in JSON", burnInNames()))
        ->type_name("NAME|FILE")
        ->group(group);
    app.add_option("--burnin-text", request.texts,
                   "A text of your own, such as top-right='take {note}'; may be given several times")
        ->type_name("PLACE=TEXT")
        ->allow_extra_args(false)
        ->group(group);
    app.add_option_function<std::vector<std::string>>(
           "--field",
           [&request](const std::vector<std::string>& texts) {
               for (const std::string& text : texts) {
                   addField(text, request);
               }
           },
           "What a field of a template says, such as show=Orion; may be given several times")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false)
        ->group(group);
}

}  // namespace Corvel
