#include <fmt/format.h>

#include "host/colour_library/ColourConfig.h"
#include "host/colour_library/Conversion.h"

namespace Corvel {
namespace {

class OpenColourLibrary : public ColourLibrary {
public:
    std::shared_ptr<const ColourConversion> openConversion(const std::string& configPath,
                                                           const ColourRequest& request,
                                                           const ColourInput& input) const override {
        return makeConversion(configPath, request, input);
    }

    std::string contents(const std::string& configPath) const override {
        const ColourConfig config(configPath);
        std::string text = "displays and their views\n";
        for (const std::string& display : config.displays()) {
            text += fmt::format("  {}\n", display);
            for (const std::string& view : config.views(display)) {
                text += fmt::format("    {}\n", view);
            }
        }
        text += "spaces\n";
        for (const std::string& space : config.spaces()) {
            text += fmt::format("  {}\n", space);
        }
        return text;
    }

    bool hasView(const std::string& configPath, const std::string& display,
                 const std::string& view) const override {
        const ColourConfig config(configPath);
        return config.hasView(config.display(display), view);
    }
};

}  // namespace
}  // namespace Corvel

extern "C" __attribute__((visibility("default"))) const Corvel::ColourLibrary* corvelColourLibrary() {
    static const Corvel::OpenColourLibrary library;
    return &library;
}
