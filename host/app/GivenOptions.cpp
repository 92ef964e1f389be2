#include "host/app/GivenOptions.h"

#include <fmt/format.h>

#include <algorithm>

namespace Corvel {
namespace {

/// "--name" of any option that has one, "-n" of others; empty for an operand.
std::string nameOf(const CLI::Option& option) {
    if (!option.get_lnames().empty()) {
        return "--" + option.get_lnames().front();
    }
    return option.get_snames().empty() ? "" : "-" + option.get_snames().front();
}

bool isAmong(const CLI::Option& option, const std::set<std::string>& names) {
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& name) { return option.check_name(name); });
}

}  // namespace

std::vector<std::string> givenOptions(const CLI::App& app, const std::set<std::string>& without) {
    std::vector<std::string> words;
    for (const CLI::Option* option : app.get_options()) {
        const std::string name = nameOf(*option);
        if (name.empty() || isAmong(*option, without)) {
            continue;
        }
        for (const std::string& value : option->results()) {
            // A switch's value says whether it was turned on or off, in the words that a switch takes.
            words.push_back(fmt::format("{}={}", name, value));
        }
    }
    return words;
}

}  // namespace Corvel
