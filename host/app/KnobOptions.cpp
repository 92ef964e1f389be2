#include "host/app/KnobOptions.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <optional>

#include "host/render/Failure.h"

namespace Corvel {
namespace {

constexpr const char* codecGroup = "Codec";
constexpr const char* soundGroup = "Sound";
constexpr const char* timecodeGroup = "Time code and metadata";

constexpr const char* rateKnob = "fps";

struct ValueOption {
    const char* names;
    const char* knob;
    const char* value;  // what it is called in the help
    const char* group;
    const char* help;
};

constexpr ValueOption valueOptions[] = {
    {"--codec", "codec", "NAME", codecGroup,
     "Codec: index, four-character type or name, as `corvel codecs` lists them, or the beginning of a name "
     "(default: "
     "Motion JPEG A)"},
    {"--quality", "quality", "NAME", codecGroup, "Min, Low, Normal, High, Max or Lossless (default: Max)"},
    {"--fps,--frame-rate", "fps", "RATE", codecGroup,
     "Frames a second, such as 25, 23.976 or 30000/1001 (default: the input's, else 24)"},
    {"--keyframerate,--keyframe-rate", "keyframerate", "N", codecGroup,
     "Most frames from one key frame to the next; 1: every frame is one, 0: the codec decides (default: 1)"},
    {"--settings", "settings", "KEY=VALUE:...", codecGroup, "The codec's own settings"},
    {"--audiofile,--audio", audioKnob, "FILE", soundGroup, "Sound for the movie"},
    {"--audio_offset,--audio-offset", "audio_offset", "N", soundGroup,
     "When the sound starts; negative: its beginning is cut off (default: 0)"},
    {"--units,--audio-units", "units", "UNIT", soundGroup,
     "What the offset counts: seconds or frames (default: seconds)"},
};

struct SwitchOption {
    const char* names;
    const char* knob;
    const char* group;
    const char* help;
};

constexpr SwitchOption switchOptions[] = {
    {"--Flatten,--fast-start,!--no-Flatten,!--no-fast-start", "Flatten", codecGroup,
     "Index in front of the frames, so that the movie plays while it is downloaded (default: on)"},
    {"--use_format_aspect,--use-format-aspect,!--no-use_format_aspect,!--no-use-format-aspect",
     "use_format_aspect", codecGroup,
     "Pixels have the shape of the input's (default: off: the codec's own, mostly square)"},
    {"--writeTimeCode,--write-timecode,!--no-writeTimeCode,!--no-write-timecode", "writeTimeCode",
     timecodeGroup, "Time-code track with the input's time code and reel (default: off)"},
};

std::optional<double> number(const std::string& text) {
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

// A rate as a number that the knob takes; rates such as 30000/1001 are worked out.
std::string rateText(const std::string& text) {
    const std::size_t slash = text.find('/');
    const std::optional<double> numerator = number(text.substr(0, slash));
    const std::optional<double> denominator =
        slash == std::string::npos ? std::optional(1.0) : number(text.substr(slash + 1));
    const double rate = numerator && denominator ? *numerator / *denominator : 0;
    if (!std::isfinite(rate) || rate <= 0) {
        throw CLI::ValidationError("--fps",
                                   fmt::format("\"{}\" is no frame rate; it is a number above 0", text));
    }
    return fmt::format("{:.9g}", rate);
}

void declareValue(CLI::App& app, const ValueOption& option, std::vector<KnobSetting>& settings) {
    const std::string knob = option.knob;
    app.add_option_function<std::string>(
           option.names,
           [&settings, knob](const std::string& text) {
               settings.push_back({knob, knob == rateKnob ? rateText(text) : text});
           },
           option.help)
        ->type_name(option.value)
        ->group(option.group);
}

void declareSwitch(CLI::App& app, const SwitchOption& option, std::vector<KnobSetting>& settings) {
    const std::string knob = option.knob;
    app.add_flag_function(
           option.names,
           [&settings, knob](std::int64_t count) {
               settings.push_back({knob, count > 0 ? "on" : "off"});
           },
           option.help)
        ->group(option.group);
}

void addSetting(const std::string& text, std::vector<KnobSetting>& settings) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        throw CLI::ValidationError("--knob", fmt::format("\"{}\" is not of the form NAME=VALUE", text));
    }
    settings.push_back({text.substr(0, equals), text.substr(equals + 1)});
}

}  // namespace

void declareKnobOptions(CLI::App& app, std::vector<KnobSetting>& settings) {
    for (const ValueOption& option : valueOptions) {
        declareValue(app, option, settings);
    }
    for (const SwitchOption& option : switchOptions) {
        declareSwitch(app, option, settings);
    }
    app.add_option_function<std::vector<std::string>>(
           "--knob",
           [&settings](const std::vector<std::string>& texts) {
               for (const std::string& text : texts) {
                   addSetting(text, settings);
               }
           },
           "Any knob of the Write node by its saved name, as `corvel knobs` lists them")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false)
        ->group(codecGroup);
}

void checkKnobFiles(const std::vector<KnobSetting>& settings) {
    for (const KnobSetting& setting : settings) {
        if (setting.knob != audioKnob || setting.text.empty()) {
            continue;
        }
        std::error_code error;
        if (std::filesystem::is_directory(setting.text, error)) {
            throw Failure(Exit::InputUnreadable, fmt::format("the audio file {} is a folder", setting.text));
        }
        if (access(setting.text.c_str(), R_OK) != 0) {
            throw Failure(Exit::InputUnreadable, fmt::format("cannot read the audio file {}: {}",
                                                             setting.text, std::strerror(errno)));
        }
    }
}

}  // namespace Corvel
