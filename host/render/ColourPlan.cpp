#include "host/render/ColourPlan.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <cstdlib>

#include "host/images/StereoName.h"
#include "host/render/Bundle.h"
#include "host/render/Failure.h"

namespace Corvel {
namespace {

constexpr const char* shippedName = "corvel";

void checkOptions(const RenderRequest& request) {
    if (!request.lut.empty() || !request.inputLut.empty()) {
        throw Failure(
            Exit::Usage,
            "--lut and --input-lut name curves of the Write node, which colour management takes the "
            "place of; use --input-space and --display or --output-space");
    }
    const ColourRequest& colour = request.colour;
    if (!colour.outputSpace.empty() && !(colour.display.empty() && colour.view.empty())) {
        throw Failure(Exit::Usage, "--output-space and a display with its view exclude each other");
    }
}

void tell(const ColourConversion& conversion) {
    spdlog::info("colours: {} to {}; the Write node's curve is bypassed", conversion.inputText(),
                 conversion.outputText());
    if (const std::string doubt = conversion.inputDoubt(); !doubt.empty()) {
        spdlog::warn("{}; --input-space says what they are", doubt);
    }
    const DisplayTags tags = conversion.tags();
    if (tags.primaries.empty() || tags.transfer.empty()) {
        spdlog::warn(
            "no tags are known for {}; --settings primaries=…:transfer=…:matrix=… says what the movie's pixels are",
            conversion.outputText());
    }
}

}  // namespace

std::string colourConfigPath(const ColourRequest& request) {
    if (!request.config.empty() && request.config != shippedName) {
        return request.config;
    }
    const char* const environment = std::getenv("OCIO");
    if (request.config.empty() && environment != nullptr && *environment != '\0') {
        return environment;
    }
    return Bundle().contents() + "/Resources/colour/corvel.ocio";
}

std::shared_ptr<const ColourConversion> planColour(const RenderRequest& request,
                                                   const PictureHeader& header) {
    if (!request.colour.wanted()) {
        return nullptr;
    }
    checkOptions(request);
    auto conversion = colourLibrary().openConversion(colourConfigPath(request.colour), request.colour,
                                                     {pathOfView(request.input, request.choice), header});
    tell(*conversion);
    return conversion;
}

}  // namespace Corvel
