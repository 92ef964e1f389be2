#include "host/app/ReadOptions.h"

#include <string>

#include "host/images/ChannelWords.h"
#include "host/images/NameMatch.h"

namespace Corvel {
namespace {

constexpr const char* group = "What to read";

void parse(const std::string& text, PictureChoice& choice, std::optional<int>& depth) {
    const std::string word = lowered(text);
    if (word == "rgb" || word == "rgba") {
        depth = static_cast<int>(word.size());
        return;
    }
    try {
        choice.channels = parseChannels(text);
    } catch (const BadPictureChoice& reason) {
        throw CLI::ValidationError("--channels", reason.what());
    }
}

// A name that is empty would be no choice at all, unlike what the person had in mind.
std::string faultOfName(const std::string& name) {
    return name.empty() ? "the name is empty" : "";
}

}  // namespace

void declareReadOptions(CLI::App& app, PictureChoice& choice, std::optional<int>& depth) {
    const auto declare = [&](const char* name, std::string& value, const char* help, const char* type) {
        app.add_option(name, value, help)
            ->check(CLI::Validator(faultOfName, "").description(""))
            ->type_name(type)
            ->group(group);
    };
    declare(
        "--part", choice.part,
        "Part of the files, such as an OpenEXR part or a page, by name or number from 0 (default: the first "
        "of the view); corvel info lists parts, layers, views and channels",
        "NAME|NUMBER");
    declare("--layer", choice.layer,
            "Layer of the files, such as diffuse (default: the colours outside of any layer)", "NAME");
    declare(
        "--stereo-view", choice.view,
        "Which stereo view of the files, and what stands for %V (left) and %v (l) in INPUT (default: left in "
        "names, the first one in files). --view is something else, that of a display",
        "NAME");
    app.add_option_function<std::string>(
           "--channels", [&choice, &depth](const std::string& text) { parse(text, choice, depth); },
           "rgb or rgba (default: what the input has); or which channels of the files become which: "
           "R=beauty.red,A=matte.a, or in order R,G,B,A, or one as grey")
        ->type_name("WHICH")
        ->group(group);
}

}  // namespace Corvel
