#include "host/app/ShotOptions.h"

#include <fmt/format.h>

#include "host/app/BurnInOptions.h"
#include "host/app/ColourOptions.h"
#include "host/app/FrameOptions.h"
#include "host/app/GeometryOptions.h"
#include "host/app/KnobOptions.h"
#include "host/app/ReadOptions.h"
#include "host/presets/PresetStore.h"
#include "host/render/Bundle.h"
#include "host/render/Curves.h"

namespace Corvel {
namespace {

std::pair<std::string, std::string> parsePair(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        throw CLI::ValidationError("--metadata", fmt::format("\"{}\" is not of the form KEY=VALUE", text));
    }
    return {text.substr(0, equals), text.substr(equals + 1)};
}

void declareCurves(CLI::App& app, RenderRequest& request) {
    constexpr const char* group = "Picture";
    const std::string curves = curveNames();
    app.add_option("--lut", request.lut,
                   fmt::format("Curve of the movie's values: {} (default: srgb)", curves))
        ->type_name("NAME")
        ->group(group);
    app.add_option(
           "--input-lut", request.inputLut,
           "Curve of the input's values (default: what the files say, else linear for floats, srgb for "
           "integers)")
        ->type_name("NAME")
        ->group(group);
}

void declareMetadata(CLI::App& app, RenderRequest& request) {
    constexpr const char* group = "Time code and metadata";
    app.add_option("--timecode", request.timecode,
                   "Time code of the first frame; turns the time-code track on (default: the input's)")
        ->type_name("HH:MM:SS:FF")
        ->group(group);
    app.add_option("--reel", request.reel, "Reel name of the time-code track (default: the input's)")
        ->type_name("NAME")
        ->group(group);
    app.add_option_function<std::vector<std::string>>(
           "--metadata",
           [&request](const std::vector<std::string>& texts) {
               for (const std::string& text : texts) {
                   request.metadata.push_back(parsePair(text));
               }
           },
           "Metadata of the movie, such as title=Opening; may be given several times")
        ->type_name("KEY=VALUE")
        ->allow_extra_args(false)
        ->group(group);
}

}  // namespace

void declarePictureOptions(CLI::App& app, RenderRequest& request) {
    declareReadOptions(app, request.choice, request.channels);
    declareCurves(app, request);
    declareGeometryOptions(app, request.format, request.geometry);
    declareColourOptions(app, request.colour);
    declareBurnInOptions(app, request.burnIns);
}

void declareShotOptions(CLI::App& app, const std::string& what, RenderRequest& request, std::string& preset) {
    declareFrameOptions(app, what, request.frames, request.missing);
    declareOrderOptions(app, request.order);
    app.add_option("--preset", preset,
                   "Start from the knob values of that preset, as `corvel presets list` names them")
        ->type_name("NAME")
        ->group("Codec");
    declareKnobOptions(app, request.knobs);
    declarePictureOptions(app, request);
    declareMetadata(app, request);
}

void settleKnobs(RenderRequest& request, const std::string& preset) {
    if (!preset.empty()) {
        request.knobs = onTopOf(presetStore(Bundle().contents()).load(preset), request.knobs);
    }
    checkKnobFiles(request.knobs);
}

}  // namespace Corvel
