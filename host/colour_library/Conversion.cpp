#include "host/colour_library/Conversion.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "host/colour_library/ColourConfig.h"
#include "host/colour_library/CompiledTransform.h"
#include "host/colour_library/InputSpace.h"
#include "host/render/Failure.h"

namespace Corvel {
namespace {

namespace OCIO = OCIO_NAMESPACE;

class Conversion : public ColourConversion {
public:
    Conversion(const std::string& configPath, ColourRequest asked, const ColourInput& given)
        : config(configPath),
          request(std::move(asked)),
          path(given.path),
          input(findInputSpace(config, request.inputSpace, given)) {
        config.checkLooks(request.looks);
        if (request.outputSpace.empty()) {
            display = config.display(request.display);
            view = config.view(display, request.view);
        } else {
            output = config.space(request.outputSpace);
        }
        context = config.library()->getCurrentContext()->createEditableCopy();
        for (const auto& [name, value] : request.context) {
            context->setStringVar(name.c_str(), value.c_str());
        }
    }

    std::shared_ptr<const ColourTransform> transform(Part part) const override {
        try {
            return compileTransform(processorOf(part));
        } catch (const OCIO::Exception& error) {
            std::string reason = error.what();
            std::replace(reason.begin(), reason.end(), '\n', ' ');
            const bool missing = dynamic_cast<const OCIO::ExceptionMissingFile*>(&error) != nullptr;
            throw Failure(Exit::InputUnreadable,
                          fmt::format("{} cannot be made {} with {}: {}{}", input.name, outputText(),
                                      config.path(), missing ? "a file of it is missing: " : "", reason));
        }
    }

    std::string inputText() const override { return fmt::format("{}, {}", input.name, input.reason); }
    std::string inputDoubt() const override {
        return input.doubt.empty() ? "" : fmt::format("{}; they are taken for {}", input.doubt, input.name);
    }
    std::string spaceOf(const PictureHeader& header) const override {
        return findInputSpace(config, request.inputSpace, {path, header}).name;
    }
    std::string inputSpace() const override { return input.name; }
    std::string outputText() const override {
        return output.empty() ? fmt::format("{} / {}", display, view) : output;
    }
    std::string configText() const override { return config.path(); }
    DisplayTags tags() const override;

private:
    OCIO::ConstProcessorRcPtr processorOf(Part part) const {
        const auto& library = config.library();
        if (part == Part::ToLight) {
            return library->getProcessor(context, input.name.c_str(), OCIO::ROLE_SCENE_LINEAR);
        }
        const std::string from = part == Part::Whole ? input.name : config.space(OCIO::ROLE_SCENE_LINEAR);
        return output.empty() ? toDisplay(from) : toSpace(from);
    }

    OCIO::ConstProcessorRcPtr toDisplay(const std::string& from) const {
        const auto shown = OCIO::DisplayViewTransform::Create();
        shown->setSrc(from.c_str());
        shown->setDisplay(display.c_str());
        shown->setView(view.c_str());
        if (request.looks.empty()) {
            return config.library()->getProcessor(context, shown, OCIO::TRANSFORM_DIR_FORWARD);
        }
        const auto pipeline = OCIO::LegacyViewingPipeline::Create();
        pipeline->setDisplayViewTransform(shown);
        pipeline->setLooksOverrideEnabled(true);
        pipeline->setLooksOverride(request.looks.c_str());
        return pipeline->getProcessor(config.library(), context);
    }

    OCIO::ConstProcessorRcPtr toSpace(const std::string& from) const {
        const auto look = OCIO::LookTransform::Create();
        look->setSrc(from.c_str());
        look->setDst(output.c_str());
        look->setLooks(request.looks.c_str());
        return config.library()->getProcessor(context, look, OCIO::TRANSFORM_DIR_FORWARD);
    }

    const ColourConfig config;
    const ColourRequest request;
    const std::string path;  // of the input
    const InputSpace input;
    std::string display;
    std::string view;
    std::string output;  // a space, instead of a display and its view
    OCIO::ContextRcPtr context;
};

DisplayTags Conversion::tags() const {
    std::string space = output;
    if (space.empty()) {
        const std::string shown =
            config.library()->getDisplayViewColorSpaceName(display.c_str(), view.c_str());
        space = shown == OCIO::OCIO_VIEW_USE_DISPLAY_NAME ? display : shown;
    }
    const OCIO::ConstColorSpaceRcPtr known = config.library()->getColorSpace(space.c_str());
    if (!known) {
        return tagsOf({display});
    }
    if (known->isData()) {
        return {};
    }
    std::vector<std::string> names{known->getName()};
    for (std::size_t i = 0; i < known->getNumAliases(); ++i) {
        names.emplace_back(known->getAlias(i));
    }
    if (output.empty()) {
        names.push_back(display);
    }
    return tagsOf(names);
}

}  // namespace

std::shared_ptr<const ColourConversion> makeConversion(const std::string& configPath,
                                                       const ColourRequest& request,
                                                       const ColourInput& input) {
    return std::make_shared<Conversion>(configPath, request, input);
}

}  // namespace Corvel
