#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "host/images/FrameSource.h"
#include "host/presets/PresetStore.h"
#include "host/render/NodeHost.h"

namespace Corvel {

/// What a node is to write, opened.
struct NodeInput {
    std::string path;
    std::unique_ptr<FrameSource> source;
    PictureHeader header;  ///< of the first frame
};

/// Opens the input, of whose files `choice` says which picture is meant; a movie has a helper of its own,
/// which `helpers` looks after, as long as it is open. Throws Failure, NoSuchInput and UnreadableImage.
NodeInput openNodeInput(const std::string& path, const PictureChoice& choice, HelperSession& helpers);

/// One Write node that another program turns the knobs of, request by request; docs/panel.md has the
/// requests. One thread; a request that opens the codec's dialog takes as long as the person does.
class NodeConversation {
public:
    /// Makes the node for that input, if there is one; `helperSession`, `presetStore` and the input outlive
    /// it. Throws Failure.
    NodeConversation(HelperSession& helperSession, const PresetStore& presetStore, const NodeInput* opened);

    /// Carries out one request, a JSON object on one line, and answers `state`, with the reason in "error"
    /// where it failed.
    nlohmann::ordered_json answer(const std::string& request);

    /// {"error": null, "knobs": as `corvel knobs --json`, "input": facts or null, "presets": as `corvel
    /// presets list --json`}
    nlohmann::ordered_json state() const;

private:
    using Json = nlohmann::ordered_json;

    void carryOut(const Json& request);
    void applyAll(const std::vector<KnobSetting>& knobs);
    void takeInput();
    void savePreset(const Json& request) const;
    std::vector<KnobSetting> knobSettings() const;

    HelperSession& helpers;
    const PresetStore& presets;
    const NodeInput* const input;  ///< null where there is none
    NodeHost host;
    const std::vector<KnobSetting> first;  ///< the knobs as the node has them by itself
    Json inputFacts;
};

/// A preset as the lists of presets have it.
nlohmann::ordered_json presetEntry(const Preset& preset);

}  // namespace Corvel
