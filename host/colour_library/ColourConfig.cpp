#include "host/colour_library/ColourConfig.h"

#include <fmt/format.h>
#include <strings.h>

#include <algorithm>
#include <filesystem>

#include "host/render/Failure.h"

namespace Corvel {
namespace {

namespace OCIO = OCIO_NAMESPACE;

std::string listOf(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text.empty() ? "none" : text;
}

// The names that `nameAt` gives for 0 to `count` - 1.
template <typename NameAt>
std::vector<std::string> listed(int count, NameAt nameAt) {
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (int i = 0; i < count; ++i) {
        names.emplace_back(nameAt(i));
    }
    return names;
}

std::string oneLine(std::string reason) {
    std::replace(reason.begin(), reason.end(), '\n', ' ');
    return reason;
}

// The one of `names` that is meant, letter case ignored; empty for none.
std::string among(const std::vector<std::string>& names, const std::string& wanted) {
    const auto found = std::find_if(names.begin(), names.end(), [&](const std::string& name) {
        return strcasecmp(name.c_str(), wanted.c_str()) == 0;
    });
    return found == names.end() ? "" : *found;
}

OCIO::ConstConfigRcPtr open(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        throw Failure(Exit::InputUnreadable, fmt::format("there is no colour configuration {}", path));
    }
    // The library would print; what matters comes as an exception.
    OCIO::SetLoggingLevel(OCIO::LOGGING_LEVEL_NONE);
    try {
        // Not validated as a whole: what is wrong with a part that nobody uses is no reason to refuse it.
        return OCIO::Config::CreateFromFile(path.c_str());
    } catch (const OCIO::Exception& failure) {
        throw Failure(Exit::InputUnreadable, fmt::format("the colour configuration {} cannot be used: {}",
                                                         path, oneLine(failure.what())));
    }
}

}  // namespace

ColourConfig::ColourConfig(const std::string& path) : path_(path), config(open(path)) {}

std::string ColourConfig::firstOf(const std::vector<std::string>& names) const {
    for (const std::string& name : names) {
        if (const OCIO::ConstColorSpaceRcPtr space = config->getColorSpace(name.c_str())) {
            return space->getName();
        }
    }
    return "";
}

std::string ColourConfig::space(const std::string& name) const {
    const std::string found = firstOf({name});
    if (found.empty()) {
        throw Failure(Exit::Usage, fmt::format("there is no colour space \"{}\" in {}; there are {}", name,
                                               path_, listOf(spaces())));
    }
    return found;
}

std::string ColourConfig::display(const std::string& name) const {
    const std::vector<std::string> all = displays();
    const std::string found = name.empty() ? config->getDefaultDisplay() : among(all, name);
    if (all.empty()) {
        throw Failure(Exit::InputUnreadable,
                      fmt::format("the colour configuration {} has no displays", path_));
    }
    if (found.empty()) {
        throw Failure(Exit::Usage, fmt::format("there is no display \"{}\" in {}; there are {}", name, path_,
                                               listOf(all)));
    }
    return found;
}

std::string ColourConfig::view(const std::string& display, const std::string& name) const {
    const std::vector<std::string> all = views(display);
    const std::string found = name.empty() ? config->getDefaultView(display.c_str()) : among(all, name);
    if (found.empty()) {
        throw Failure(Exit::Usage, fmt::format("the display \"{}\" in {} has no view \"{}\"; there are {}",
                                               display, path_, name, listOf(all)));
    }
    return found;
}

void ColourConfig::checkLooks(const std::string& looks) const {
    const std::vector<std::string> all =
        listed(config->getNumLooks(), [this](int i) { return config->getLookNameByIndex(i); });
    constexpr const char* separators = ",:| ";
    for (std::size_t i = 0; i < looks.size();) {
        const std::size_t begin = looks.find_first_not_of(separators, i);
        if (begin == std::string::npos) {
            return;
        }
        const std::size_t end = std::min(looks.find_first_of(",:|", begin), looks.size());
        const bool hasSign = looks[begin] == '+' || looks[begin] == '-';
        std::string look = looks.substr(begin + (hasSign ? 1 : 0), end - begin - (hasSign ? 1 : 0));
        look.erase(look.find_last_not_of(' ') + 1);
        look.erase(0, look.find_first_not_of(' '));
        if (!look.empty() && among(all, look).empty()) {
            throw Failure(Exit::Usage, fmt::format("there is no look \"{}\" in {}; there are {}", look, path_,
                                                   listOf(all)));
        }
        i = end;
    }
}

std::vector<std::string> ColourConfig::spaces() const {
    return listed(config->getNumColorSpaces(), [this](int i) { return config->getColorSpaceNameByIndex(i); });
}

std::vector<std::string> ColourConfig::displays() const {
    return listed(config->getNumDisplays(), [this](int i) { return config->getDisplay(i); });
}

std::vector<std::string> ColourConfig::views(const std::string& display) const {
    return listed(config->getNumViews(display.c_str()),
                  [&](int i) { return config->getView(display.c_str(), i); });
}

}  // namespace Corvel
