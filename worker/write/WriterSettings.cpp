#include "worker/write/WriterSettings.h"

#include <vector>

#include "property/FieldEncoding.h"
#include "timecode/Timecode.h"
#include "worker/FailureReport.h"
#include "worker/codec/CodecTable.h"
#include "worker/codec/ExactRate.h"
#include "worker/write/CodecDialogModel.h"
#include "worker/write/SettingsDialog.h"

namespace Morvane::Worker {

const Codec& WriterSettings::codec() const {
    const auto table = codecTable();
    if (index < 0 || static_cast<std::size_t>(index) >= table.size())
        throw StatusError(Status::BadArgument, "no codec has the index " + std::to_string(index));
    return table[static_cast<std::size_t>(index)];
}

void WriterSettings::setCodec(std::int32_t newIndex) {
    index = newIndex;
    settings.reset();
    refusal.reset();
    codec();
}

std::string WriterSettings::configure(const PictureSetup& pictures, const std::string& settingsText) {
    pictureSetup = pictures;
    settings.reset();
    refusal.reset();
    try {
        settings = Settings::parse(settingsText, codec());
    } catch (const StatusError& error) {
        refusal.emplace(error);
        throw;
    }
    return settings->text();
}

EncodingPlan WriterSettings::plan() const {
    if (refusal)
        throw *refusal;
    if (!settings)
        throw StatusError(Status::BadArgument, "the codec has not been configured");
    EncodingRequest request;
    request.settings = *settings;
    if (!useFormatAspect)
        request.settings.aspect = {0, 1};
    request.width = pictureSetup.width;
    request.height = pictureSetup.height;
    request.quality = pictureSetup.quality;
    request.keyFrameRate = pictureSetup.keyFrameRate;
    request.hasAlpha = pictureSetup.hasAlpha;
    request.rate = exactRate(pictureSetup.framesPerSecond);
    return planEncoding(request);
}

std::optional<TimecodeTrack> WriterSettings::provisionalTimecode() const {
    if (!settings || settings->timecode.empty())
        return std::nullopt;
    // Read as the host reads it for the final track, so that both start at the same frame.
    const Timecode::FrameRate rate = Timecode::toFrameRateCode(pictureSetup.framesPerSecond);
    const std::int64_t start = Timecode::parseTimecode(settings->timecode, rate, Timecode::Mode::NonDrop);
    if (start < 0 || rate.nominalRate() == 0) {
        reportRemark("the time code " + settings->timecode + " cannot be kept while the movie is written");
        return std::nullopt;
    }
    return TimecodeTrack{static_cast<int>(rate.nominalRate()), start, settings->reel};
}

Metadata WriterSettings::metadata(const EncodingPlan& plan) const {
    Metadata metadata;
    if (settings)
        metadata.insert(settings->metadata.begin(), settings->metadata.end());
    metadata[alphaMetadataKey] = alphaModeName(plan.alpha);
    return metadata;
}

std::string WriterSettings::summary(const std::string& settingsText) const {
    return Settings::parse(settingsText, codec()).summary();
}

std::string WriterSettings::defaultText() const {
    return Settings::defaults(codec()).text();
}

std::string WriterSettings::propertyListText(const std::string& settingsText) const {
    return Settings::parse(settingsText, codec()).propertyListText();
}

std::string WriterSettings::textOfPropertyList(const std::string& listText) const {
    return Settings::fromPropertyList(listText, codec()).text();
}

std::string WriterSettings::edit(const std::string& settingsText) {
    DialogState state{index, pictureSetup.quality, pictureSetup.keyFrameRate, pictureSetup.framesPerSecond,
                      settingsText};
    editInDialog(state, CodecDialogModel(pictureSetup, useFormatAspect, ending));
    if (state.codec != index)
        setCodec(state.codec);
    pictureSetup.quality = state.quality;
    pictureSetup.keyFrameRate = state.keyFrameRate;
    pictureSetup.framesPerSecond = state.framesPerSecond;
    return state.settings;
}

std::string codecListText() {
    std::vector<std::string> entries;
    for (const Codec& codec : codecTable())
        entries.push_back(codecEntry(codec));
    return Property::joinFields(entries);
}

}  // namespace Morvane::Worker
