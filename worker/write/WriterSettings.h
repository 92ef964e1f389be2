#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "worker/Status.h"
#include "worker/codec/EncodingPlan.h"
#include "worker/codec/Settings.h"
#include "worker/movie/MovieTracks.h"

namespace Morvane::Worker {

/// What `configure` says about the pictures to come.
struct PictureSetup {
    std::int32_t width = 0;         ///< pixels
    std::int32_t height = 0;        ///< pixels
    std::int32_t keyFrameRate = 1;  ///< longest distance between key frames; 0: the codec decides
    std::int32_t quality = 4;       ///< 0 to 5
    bool hasAlpha = false;
    float framesPerSecond = 24;
};

/// The codec and its settings as the host has chosen them for the next movie. Changing them while a movie is
/// open does not touch that movie. Operations throw StatusError.
class WriterSettings {
public:
    /// Chooses the codec and forgets the settings, which belong to a codec. An index that names none leaves
    /// no codec chosen, so that nothing is written in another codec than the one asked for.
    void setCodec(std::int32_t newIndex);
    std::int32_t codecIndex() const { return index; }

    void setUseFormatAspect(bool on) { useFormatAspect = on; }

    /// Takes a setup and a settings text; answers the complete, normalised text. Settings that are refused
    /// are remembered and refuse the next opening with the same status, deliberately: nobody reads this
    /// answer.
    std::string configure(const PictureSetup& pictures, const std::string& settingsText);
    const PictureSetup& setup() const { return pictureSetup; }

    /// The plan of the next movie. BadArgument before `configure`, or for a rate or size that is none; the
    /// status of refused settings; NotSupportedByCodec for a size or settings that do not go together.
    EncodingPlan plan() const;

    /// The time-code track that the settings ask for until the host names the real one: a movie whose host
    /// dies has its time code then.
    std::optional<TimecodeTrack> provisionalTimecode() const;

    /// The metadata that the settings name, and what alpha means in a movie of `plan`.
    Metadata metadata(const EncodingPlan& plan) const;

    std::string summary(const std::string& settingsText) const;
    std::string defaultText() const;
    std::string propertyListText(const std::string& settingsText) const;
    std::string textOfPropertyList(const std::string& listText) const;

    /// Shows the codec's dialog, seeded with `settingsText`, takes over what the person chose and answers the
    /// text that they left.
    std::string edit(const std::string& settingsText);
    /// Closes the dialog that is open, or that would be opened later: the worker is about to end. Any thread.
    void endEditing() { ending = true; }

private:
    const Codec& codec() const;

    std::int32_t index = 0;
    std::atomic<bool> ending{false};
    bool useFormatAspect = false;
    PictureSetup pictureSetup;
    std::optional<Settings> settings;    ///< empty until `configure` has accepted some
    std::optional<StatusError> refusal;  ///< why it has not
};

/// The codec list: every entry one field.
std::string codecListText();

}  // namespace Morvane::Worker
