#include "host/app/HelpText.h"

#include <sstream>
#include <string>

namespace Corvel {
namespace {

constexpr std::size_t nameColumn = 30;
constexpr std::size_t lastColumn = 100;

std::string wrapped(const std::string& text, std::size_t width) {
    std::istringstream words(text);
    std::string lines, word;
    std::size_t length = 0;
    while (words >> word) {
        if (length != 0 && length + 1 + word.size() > width) {
            lines += '\n';
            length = 0;
        }
        lines += (length != 0 ? " " : "") + word;
        length += (length != 0 ? 1 : 0) + word.size();
    }
    return lines;
}

class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter() { column_width(nameColumn); }

    std::string make_option_name(const CLI::Option* option, bool positional) const override {
        const bool canBeOff = option->check_fname("no-" + option->get_single_name());
        return canBeOff ? switchName(*option) : CLI::Formatter::make_option_name(option, positional);
    }

    std::string make_option_desc(const CLI::Option* option) const override {
        return wrapped(option->get_description(), lastColumn - nameColumn);
    }

    // Nothing about several values: an option that may come again says so itself.
    std::string make_option_opts(const CLI::Option* option) const override {
        const bool withValue = option->get_type_size() != 0 && !option->get_type_name().empty();
        return (withValue ? " " + option->get_type_name() : "") +
               (option->get_required() ? " (required)" : "");
    }

private:
    static std::string switchName(const CLI::Option& option) {
        std::string names;
        for (const std::string& name : option.get_lnames()) {
            if (name.compare(0, 3, "no-") != 0) {
                names += (names.empty() ? "--[no-]" : ",--[no-]") + name;
            }
        }
        return names;
    }
};

}  // namespace

std::shared_ptr<CLI::Formatter> makeHelpFormatter() {
    return std::make_shared<HelpFormatter>();
}

}  // namespace Corvel
