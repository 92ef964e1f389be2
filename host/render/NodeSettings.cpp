#include "host/render/NodeSettings.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "Kex/Image/LUT.h"
#include "host/render/Curves.h"
#include "host/render/Failure.h"
#include "host/render/KnobValue.h"
#include "host/render/MovieStart.h"
#include "host/render/PictureNode.h"
#include "host/render/SettingsText.h"
#include "timecode/FrameRate.h"

namespace Corvel {
namespace {

using Kex::Image::Write;

constexpr const char* codecKnob = "codec";
constexpr const char* settingsKnob = "settings";
constexpr const char* rateKnob = "fps";
constexpr const char* useAspectKnob = "use_format_aspect";
constexpr const char* writeTimecodeKnob = "writeTimeCode";
constexpr const char* soundKnob = "audiofile";
constexpr const char* soundOffsetKnob = "audio_offset";
constexpr const char* soundUnitsKnob = "units";
constexpr const char* dialogKnob = "advanced";

constexpr const char* timecodeKey = "input/timecode";
constexpr const char* reelKey = "quicktime/reel";
constexpr const char* rateKey = "input/frame_rate";

double knobNumber(const Write& node, const char* name) {
    const Kex::Image::Knob* const knob = node.knob(name);
    return knob == nullptr ? 0 : knob->get_value();
}

bool isGiven(const RenderRequest& request, const std::string& knob) {
    return std::any_of(request.knobs.begin(), request.knobs.end(),
                       [&](const KnobSetting& setting) { return setting.knob == knob; });
}

template <typename Wanted>
void applyThose(Write& node, const std::vector<KnobSetting>& settings, Wanted wanted) {
    for (const KnobSetting& setting : settings) {
        if (wanted(setting.knob)) {
            applyKnob(node, setting.knob, setting.text);
        }
    }
}

bool isCodec(const std::string& knob) {
    return knob == codecKnob;
}

bool isSettings(const std::string& knob) {
    return knob == settingsKnob;
}

void applyBeforeSettings(Write& node, const std::vector<KnobSetting>& settings) {
    applyThose(node, settings, isCodec);
    applyThose(node, settings, [](const std::string& knob) { return !isCodec(knob) && !isSettings(knob); });
}

bool isRate(double rate) {
    return rate > 0 && rate <= 1000;
}

// A writer of images has no rate.
void checkRate(const Write& node) {
    const double rate = knobNumber(node, rateKnob);
    if (node.knob(rateKnob) != nullptr && !isRate(rate)) {
        throw Failure(
            Exit::Usage,
            fmt::format("{} frames a second are no frame rate; it is above 0 and at most 1000", rate));
    }
}

void applyRate(Write& node, const Metadata& metadata) {
    const auto rate = metadata.find(rateKey);
    if (rate == metadata.end() || node.knob(rateKnob) == nullptr) {
        return;
    }
    if (!isRate(std::strtod(rate->second.c_str(), nullptr))) {
        spdlog::warn("the input says {} frames a second, which is no frame rate; {} is taken", rate->second,
                     knobNumber(node, rateKnob));
        return;
    }
    applyKnob(node, rateKnob, rate->second);
}

// The time code as the movie's first frame has it, written as the track will have it.
void settleTimecode(const Write& node, const RenderRequest& request, RenderPlan& plan) {
    const auto entry = plan.metadata.find(timecodeKey);
    if (entry == plan.metadata.end() || knobNumber(node, writeTimecodeKnob) == 0) {
        return;
    }
    const auto rate = Morvane::Timecode::toFrameRateCode(static_cast<float>(knobNumber(node, rateKnob)));
    const std::string fault = timecodeFault(entry->second, rate);
    if (!fault.empty()) {
        if (!request.timecode.empty()) {
            throw Failure(Exit::Usage, fault);
        }
        spdlog::warn("the input's time code is left out: {}", fault);
        plan.metadata.erase(entry);
        return;
    }
    if (isDropFrame(entry->second) && rate.hasFlag()) {
        spdlog::warn("the time code {} is written as drop-frame; it will be read as non-drop", entry->second);
    }
    if (plan.timecodeLead != 0) {
        entry->second = timecodeBefore(entry->second, rate, plan.timecodeLead);
        plan.timecodeLead = 0;
    }
}

// The sound begins with the first picture: behind the slate, as long as that is seen.
void shiftSound(Write& node, const RenderPlan& plan) {
    const Kex::Image::Knob* const sound = node.knob(soundKnob);
    if (!plan.slate || sound == nullptr || sound->get_text().empty()) {
        return;
    }
    const bool inFrames = knobNumber(node, soundUnitsKnob) != 0;
    const double later = inFrames ? 1 : 1 / knobNumber(node, rateKnob);
    applyKnob(node, soundOffsetKnob, fmt::format("{:.9g}", knobNumber(node, soundOffsetKnob) + later));
}

void addTimecode(SettingsText& settings, const Write& node, const RenderPlan& plan) {
    const auto timecode = plan.metadata.find(timecodeKey);
    if (timecode == plan.metadata.end() || knobNumber(node, writeTimecodeKnob) == 0) {
        return;
    }
    const auto rate = Morvane::Timecode::toFrameRateCode(static_cast<float>(knobNumber(node, rateKnob)));
    settings.add("timecode", timecodeBefore(timecode->second, rate, 0));
    if (const auto reel = plan.metadata.find(reelKey); reel != plan.metadata.end()) {
        settings.add("reel", reel->second);
    }
}

// What the movie says about its colours. "colour" stands for primaries, transfer and matrix together.
void addColourTags(SettingsText& settings, const RenderPlan& plan) {
    if (settings.has("colour")) {
        return;
    }
    const auto add = [&settings](const char* key, const std::string& value) {
        if (!value.empty()) {
            settings.add(key, value);
        }
    };
    if (plan.colour) {
        const DisplayTags tags = plan.colour->tags();
        // As the matrix of a preset, which gives way where a codec has one of its own.
        add("colour", tags.matrix == "bt2020nc" ? "bt2020" : "");
        add("primaries", tags.primaries);
        add("transfer", tags.transfer);
    } else if (plan.lut != nullptr) {
        add("transfer", transferOf(*plan.lut));
    }
}

void addToSettings(Write& node, const RenderRequest& request, const RenderPlan& plan) {
    const Kex::Image::Knob* const knob = node.knob(settingsKnob);
    SettingsText settings(knob == nullptr ? "" : knob->get_text());
    if (knobNumber(node, useAspectKnob) != 0) {
        settings.add("aspect", aspectFraction(plan.format.pixelAspect()));
    }
    if (request.threads != 0) {
        settings.add("threads", fmt::format("{}", request.threads));
    }
    addColourTags(settings, plan);
    // Only straight alpha is divided in linear light.
    if (settings.value("alpha") == "straight") {
        settings.add("curve", node.lut() != nullptr ? node.lut()->name() : "linear");
    }
    addTimecode(settings, node, plan);
    for (const auto& [key, value] : request.metadata) {
        if (plan.metadata.count(key) == 0) {
            settings.add("meta." + key, value);
        }
    }
    if (knob != nullptr && settings.text() != knob->get_text()) {
        applyKnob(node, settingsKnob, settings.text());
    }
}

Kex::Image::MetaData::Bundle bundleOf(const Metadata& metadata) {
    Kex::Image::MetaData::Bundle bundle;
    for (const auto& [key, value] : metadata) {
        bundle.setData(key, value);
    }
    return bundle;
}

}  // namespace

void applyKnobs(Write& node, const std::vector<KnobSetting>& settings) {
    applyBeforeSettings(node, settings);
    applyThose(node, settings, isSettings);
}

void takeFromInput(Write& node, const Metadata& metadata, bool isMovie) {
    applyRate(node, metadata);
    if (isMovie && metadata.count(timecodeKey) != 0) {
        applyKnob(node, writeTimecodeKnob, "on");
    }
}

void applySettings(Write& node, PictureNode& picture, const RenderRequest& request, RenderPlan& plan) {
    applyBeforeSettings(node, request.knobs);
    if (!isGiven(request, rateKnob)) {
        applyRate(node, plan.metadata);
    }
    applyThose(node, request.knobs, isSettings);
    const bool carried = plan.carriesTimecode && !isGiven(request, writeTimecodeKnob);
    if (!request.timecode.empty() || carried) {
        applyKnob(node, writeTimecodeKnob, "on");
    }
    if (request.advanced) {
        applyKnob(node, dialogKnob, "");
    }
    checkRate(node);
    shiftSound(node, plan);
    settleTimecode(node, request, plan);
    picture.setMetaData(bundleOf(plan.metadata));
    addToSettings(node, request, plan);
}

std::string aspectFraction(double aspect) {
    // Continued fraction, until single precision can't tell the difference.
    std::int64_t lastNumerator = 1, lastDenominator = 0;
    std::int64_t numerator = std::llround(std::floor(aspect)), denominator = 1;
    double rest = aspect - std::floor(aspect);
    while (std::abs(static_cast<double>(numerator) / static_cast<double>(denominator) - aspect) >
           1e-6 * aspect) {
        const double inverse = 1 / rest;
        const std::int64_t whole = std::llround(std::floor(inverse));
        lastNumerator = std::exchange(numerator, whole * numerator + lastNumerator);
        lastDenominator = std::exchange(denominator, whole * denominator + lastDenominator);
        rest = inverse - std::floor(inverse);
    }
    return fmt::format("{}/{}", numerator, denominator);
}

}  // namespace Corvel
