#include "host/app/NodeConversation.h"

#include <fmt/format.h>

#include <memory>

#include "host/app/KnobList.h"
#include "host/images/FrameRange.h"
#include "host/images/ImageSequence.h"
#include "host/movies/MovieSource.h"
#include "host/render/KnobValue.h"
#include "host/render/NodeSettings.h"

namespace Corvel {
namespace {

using Json = nlohmann::ordered_json;

std::string textOf(const Json& request, const char* name) {
    const auto found = request.find(name);
    if (found == request.end() || !found->is_string()) {
        throw Failure(Exit::Usage, fmt::format("the request lacks the text \"{}\"", name));
    }
    return found->get<std::string>();
}

// A value that `applyKnob` takes and that stays right when lists grow: the first word of an entry such as
// "ap4h TAB ProRes 4444".
std::string settingText(const Kex::Image::Knob& knob) {
    const std::string text = knob.get_text();
    return knob.kind() == Kex::Image::Knob_Enumeration ? text.substr(0, text.find('\t')) : text;
}

Json factsOf(const NodeInput& input) {
    const PictureHeader& header = input.header;
    const auto text = [&](const char* key) {
        const auto found = header.metadata.find(key);
        return found == header.metadata.end() ? Json() : Json(found->second);
    };
    const std::vector<int>& frames = input.source->frames();
    return {{"path", input.path},
            {"first", frames.front()},
            {"last", frames.back()},
            {"frames", frameRangeText(frames)},
            {"width", header.display.width},
            {"height", header.display.height},
            {"pixel_aspect", header.pixelAspect},
            {"alpha", header.hasAlpha},
            {"bits", header.bits},
            {"channels", header.picked.empty() ? Json() : Json(header.picked)},
            {"rate", text("input/frame_rate")},
            {"timecode", text("input/timecode")},
            {"reel", text("quicktime/reel")}};
}

Kex::Image::Format formatOf(const NodeInput* input) {
    if (input == nullptr) {
        return {1920, 1080};
    }
    const PictureHeader& header = input->header;
    return {header.display.width, header.display.height, header.pixelAspect};
}

}  // namespace

NodeInput openNodeInput(const std::string& path, const PictureChoice& choice, HelperSession& helpers) {
    NodeInput input;
    input.path = path;
    if (isMovieName(path)) {
        input.source = std::make_unique<MovieSource>(moviePath(path, choice), nullptr, helpers);
    } else {
        input.source = std::make_unique<ImageSequence>(path, nullptr, choice);
    }
    input.header = input.source->header(input.source->frames().front());
    return input;
}

NodeConversation::NodeConversation(HelperSession& helperSession, const PresetStore& presetStore,
                                   const NodeInput* opened)
    : helpers(helperSession),
      presets(presetStore),
      input(opened),
      host("panel.mov", formatOf(input), input != nullptr && !input->header.hasAlpha ? 3 : 4, helperSession),
      first(knobSettings()) {
    if (input != nullptr) {
        inputFacts = factsOf(*input);
        takeInput();
    }
}

void NodeConversation::takeInput() {
    if (input != nullptr) {
        takeFromInput(host.node(), input->header.metadata, isMovieName(input->path));
    }
}

std::vector<KnobSetting> NodeConversation::knobSettings() const {
    std::vector<KnobSetting> settings;
    // The node itself is never changed through this.
    for (const auto& knob : const_cast<NodeHost&>(host).node().knobs()) {
        if (knob->kind() != Kex::Image::Knob_Button) {
            settings.push_back({knob->name(), settingText(*knob)});
        }
    }
    return settings;
}

Json NodeConversation::answer(const std::string& request) {
    std::string failure;
    try {
        const Json document = Json::parse(request, nullptr, false);
        if (!document.is_object()) {
            throw Failure(Exit::Usage, "the request is no JSON object");
        }
        carryOut(document);
    } catch (const std::exception& error) {
        failure = error.what();
    }
    helpers.setIdle("waiting for a request");
    Json told = state();
    if (!failure.empty()) {
        told["error"] = failure;
    }
    return told;
}

Json NodeConversation::state() const {
    Json knobs = Json::array();
    for (const auto& knob : const_cast<NodeHost&>(host).node().knobs()) {
        knobs.push_back(knobJson(*knob));
    }
    Json listed = Json::array();
    for (const Preset& preset : presets.list()) {
        listed.push_back(presetEntry(preset));
    }
    return {{"error", nullptr}, {"knobs", knobs}, {"input", inputFacts}, {"presets", listed}};
}

void NodeConversation::carryOut(const Json& request) {
    const std::string what = textOf(request, "do");
    if (what == "set") {
        helpers.setActivity("setting up");
        applyKnob(host.node(), textOf(request, "knob"), textOf(request, "value"));
    } else if (what == "press") {
        // As long as the person takes, which is no sign of a helper in trouble.
        helpers.setIdle("showing the settings dialog");
        applyKnob(host.node(), textOf(request, "knob"), "");
    } else if (what == "input") {
        takeInput();
    } else if (what == "knobs") {
        applyAll(readPreset(request.dump(), "the request").knobs);
    } else if (what == "preset") {
        applyAll(presets.load(textOf(request, "name")).knobs);
    } else if (what == "save") {
        savePreset(request);
    } else if (what == "delete") {
        presets.remove(textOf(request, "name"));
    } else if (what == "reset") {
        applyAll(first);
    } else {
        throw Failure(Exit::Usage, fmt::format("there is no request \"{}\"", what));
    }
}

void NodeConversation::applyAll(const std::vector<KnobSetting>& knobs) {
    helpers.setActivity("setting up");
    applyKnobs(host.node(), knobs);
}

void NodeConversation::savePreset(const Json& request) const {
    Preset preset{.name = textOf(request, "name"), .description = "", .knobs = knobSettings()};
    if (const auto text = request.find("description"); text != request.end() && text->is_string()) {
        preset.description = text->get<std::string>();
    }
    presets.save(preset);
}

Json presetEntry(const Preset& preset) {
    Json knobs = Json::object();
    for (const KnobSetting& setting : preset.knobs) {
        knobs[setting.knob] = setting.text;
    }
    return {{"name", preset.name},
            {"description", preset.description},
            {"shipped", preset.shipped},
            {"knobs", knobs}};
}

}  // namespace Corvel
