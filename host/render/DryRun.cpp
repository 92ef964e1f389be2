#include "host/render/DryRun.h"

#include <fmt/format.h>

#include <algorithm>

#include "Kex/Image/LUT.h"
#include "host/images/FrameRange.h"
#include "host/images/StereoName.h"

namespace Corvel {
namespace {

std::string lineOf(const std::string& name, const std::string& value) {
    return fmt::format("{:<18}{}\n", name, value);
}

std::string framesText(const RenderPlan& plan) {
    std::vector<int> numbers;
    for (const PlannedFrame& frame : plan.frames) {
        numbers.push_back(frame.number);
    }
    const auto filled = std::count_if(plan.frames.begin(), plan.frames.end(),
                                      [](const PlannedFrame& frame) { return frame.isFilled(); });
    return fmt::format("{} ({} in all{}{})", frameRangeText(numbers), numbers.size(),
                       plan.slate ? ", the first one a slate" : "",
                       filled > 0 ? fmt::format(", {} of them missing and filled", filled) : "");
}

std::string valueOf(const Kex::Image::Knob& knob) {
    std::string text = knob.get_text();
    if (knob.kind() == Kex::Image::Knob_Checkbox) {
        return knob.get_value() != 0 ? "on" : "off";
    }
    std::replace(text.begin(), text.end(), '\t', ' ');
    return text;
}

}  // namespace

std::string dryRunText(const RenderRequest& request, const RenderPlan& plan, const Kex::Image::Write& node) {
    std::string text =
        lineOf("input", pathOfView(request.input, request.choice)) +
        (plan.picked.empty() ? "" : lineOf("channels", plan.picked)) + lineOf("frames", framesText(plan)) +
        lineOf("output", request.output) +
        lineOf("picture",
               fmt::format("{} x {} pixels, pixel aspect {}, {}", plan.format.width(), plan.format.height(),
                           plan.format.pixelAspect(), plan.depth == 4 ? "with alpha" : "no alpha")) +
        lineOf("curve", node.lut() == nullptr ? "none" : node.lut()->name());
    if (plan.colour) {
        text += lineOf("colour from", plan.colour->inputText()) +
                lineOf("colour to", plan.colour->outputText()) +
                lineOf("configuration", plan.colour->configText());
    }
    for (const auto& knob : node.knobs()) {
        if (knob->kind() != Kex::Image::Knob_Button) {
            text += lineOf(knob->name(), valueOf(*knob));
        }
    }
    for (const auto& [key, value] : plan.metadata) {
        text += lineOf(key, value);
    }
    return text;
}

}  // namespace Corvel
