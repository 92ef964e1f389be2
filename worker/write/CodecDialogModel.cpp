#include "worker/write/CodecDialogModel.h"

#include <algorithm>

#include "worker/codec/CodecTable.h"
#include "worker/codec/SettingsText.h"
#include "worker/encode/SizeEstimate.h"
#include "worker/write/DialogControls.h"

namespace Morvane::Worker {

namespace {

/// Large enough for what is typical of a codec, small enough to be encoded in no time; a multiple of what
/// every codec asks for.
constexpr std::int32_t sampleWidth = 512;
constexpr std::int32_t sampleHeight = 256;

const Codec& row(std::int32_t index) {
    const auto table = codecTable();
    if (index < 0 || static_cast<std::size_t>(index) >= table.size())
        throw StatusError(Status::BadArgument, "no codec has the index " + std::to_string(index));
    return table[static_cast<std::size_t>(index)];
}

std::map<std::string, std::string> valuesOf(const std::string& text, const Codec& codec) {
    const SettingPairs pairs = parseSettingPairs(Settings::parse(text, codec).text());
    return {pairs.begin(), pairs.end()};
}

/// Whether the key has that value where `text` leaves it alone.
bool hasByItself(const std::string& text, const Codec& codec, const std::string& key,
                 const std::string& value) try {
    const auto values = valuesOf(text, codec);
    const auto found = values.find(key);
    return found == values.end() ? value.empty() : found->second == value;
} catch (const StatusError&) {
    return false;
}

}  // namespace

CodecDialogModel::CodecDialogModel(const PictureSetup& setup, bool formatAspect, const std::atomic<bool>& end)
    : pictures(setup), useFormatAspect(formatAspect), ending(end) {
    // A dialog may be asked for before anything is configured.
    if (pictures.width < 1 || pictures.height < 1) {
        pictures.width = 1920;
        pictures.height = 1080;
    }
}

std::vector<std::string> CodecDialogModel::codecs() const {
    std::vector<std::string> names;
    for (const Codec& codec : codecTable())
        names.emplace_back(codec.name);
    return names;
}

DialogCodec CodecDialogModel::codec(std::int32_t index) const {
    return dialogCodec(row(index));
}

EncodingPlan CodecDialogModel::planOf(const DialogState& state, std::int32_t width,
                                      std::int32_t height) const {
    WriterSettings trial;
    trial.setCodec(state.codec);
    trial.setUseFormatAspect(useFormatAspect);
    trial.configure(
        {width, height, state.keyFrameRate, state.quality, pictures.hasAlpha, state.framesPerSecond},
        state.settings);
    return trial.plan();
}

DialogAnswer CodecDialogModel::check(const DialogState& state) const {
    DialogAnswer answer;
    try {
        answer.values = valuesOf(state.settings, row(state.codec));
        answer.summary = planInWords(planOf(state, pictures.width, pictures.height), state.quality);
    } catch (const StatusError& error) {
        answer.problem = error.what();
    }
    return answer;
}

std::string CodecDialogModel::withValue(const DialogState& state, const std::string& key,
                                        const std::string& value) const {
    SettingPairs pairs = parseSettingPairs(state.settings);
    // The curve of straight alpha goes with it: without it the key is refused, and no control shows it then.
    if (key == "alpha" && value != alphaModeName(AlphaMode::Straight))
        pairs.erase(std::remove_if(pairs.begin(), pairs.end(),
                                   [](const auto& pair) { return pair.first == "curve"; }),
                    pairs.end());
    const auto place =
        std::find_if(pairs.begin(), pairs.end(), [&](const auto& pair) { return pair.first == key; });
    SettingPairs without = pairs;
    if (place != pairs.end())
        without.erase(without.begin() + (place - pairs.begin()));
    const std::string text = formatSettingPairs(without);
    if (hasByItself(text, row(state.codec), key, value))
        return text;
    if (place != pairs.end())
        place->second = value;
    else
        pairs.emplace_back(key, value);
    return formatSettingPairs(pairs);
}

EncodingPlan CodecDialogModel::samplePlanOf(const DialogState& state) const try {
    return planOf(state, std::min(pictures.width, sampleWidth), std::min(pictures.height, sampleHeight));
} catch (const StatusError&) {
    // A codec with sizes of its own.
    return planOf(state, pictures.width, pictures.height);
}

std::optional<double> CodecDialogModel::bytesPerMinute(const DialogState& state) const try {
    const double pixels = static_cast<double>(pictures.width) * pictures.height;
    const EncodingPlan plan = samplePlanOf(state);
    return estimateBytesPerPixel(plan) * pixels * av_q2d(plan.rate) * 60;
} catch (const StatusError&) {
    return std::nullopt;
}

}  // namespace Morvane::Worker
