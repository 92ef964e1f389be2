#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// What the worker and the library with its settings dialog say to each other. Neither the windows' nor the
/// codecs' library appears here, so that the worker is built and runs without the one and the dialog without
/// the other.
namespace Morvane::Worker {

/// What the settings dialog shows and lets a person change.
struct DialogState {
    std::int32_t codec = 0;  ///< index into the codec list
    std::int32_t quality = 4;
    std::int32_t keyFrameRate = 1;
    float framesPerSecond = 24;
    std::string settings;

    bool operator==(const DialogState&) const = default;
};

/// One key of the settings text as a control.
struct DialogControl {
    enum class Group { Codec, Quality, Colour, Advanced };
    enum class Kind { Choice, Integer, Number, Text };

    std::string key;
    std::string label;
    Group group = Group::Advanced;
    Kind kind = Kind::Text;
    std::vector<std::string> choices;  ///< Choice
    double lowest = 0;                 ///< Integer and Number
    double highest = 0;
    bool automatic = false;  ///< Integer and Number: "auto" is a value too
    std::string unit;        ///< behind the value; may be empty
    std::string defaultValue;
    std::string help;  ///< sentences
};

/// One codec, as far as the dialog shows it.
struct DialogCodec {
    std::string facts;  ///< one line: depth, alpha, sizes
    /// What each of the six qualities does, in the encoder's words; empty where quality makes no difference.
    std::vector<std::string> qualities;
    bool keyFrames = false;               ///< whether there are frames that are no key frames
    std::vector<DialogControl> controls;  ///< none that has but one value
};

/// What a state comes to.
struct DialogAnswer {
    std::string problem;                        ///< a sentence; empty where a movie can be made so
    std::map<std::string, std::string> values;  ///< effective value of every key; empty with a problem
    std::string summary;                        ///< plain words; empty with a problem
};

/// What the dialog asks the worker. Called on the thread that the dialog runs on, but for `bytesPerMinute`
/// and `isEnding`, which may be called on any one.
class DialogModel {
public:
    virtual ~DialogModel() = default;

    /// The names of all codecs, in the order of their indices.
    virtual std::vector<std::string> codecs() const = 0;
    virtual DialogCodec codec(std::int32_t index) const = 0;
    virtual DialogAnswer check(const DialogState& state) const = 0;
    /// The settings text of `state` with one key changed; the rest of the text stays as it stands. A key that
    /// then has its default is left out.
    virtual std::string withValue(const DialogState& state, const std::string& key,
                                  const std::string& value) const = 0;
    /// About how large a minute of pictures becomes; nothing where that can't be told. Encodes a few
    /// pictures, so it takes a while.
    virtual std::optional<double> bytesPerMinute(const DialogState& state) const = 0;
    /// Whether the worker is about to end: the dialog closes itself then, as cancelled.
    virtual bool isEnding() const = 0;
};

/// How a dialog ended.
enum class DialogOutcome : std::int32_t {
    Accepted,   ///< the state is what the person left
    Cancelled,  ///< the state is as it was
    NoDisplay,  ///< there is nowhere to show a dialog; the state is as it was
};

/// The one function of the library, under the name `editSettingsSymbol`: shows the dialog and returns when it
/// is closed. On the process's first thread.
using EditSettings = DialogOutcome (*)(DialogState& state, const DialogModel& model);
inline constexpr const char* editSettingsSymbol = "corvelEditSettings";
inline constexpr const char* dialogLibraryName = "libcorvel-settings-dialog.so";

}  // namespace Morvane::Worker
