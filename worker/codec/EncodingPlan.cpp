#include "worker/codec/EncodingPlan.h"

#include "worker/Status.h"
#include "worker/codec/PictureChoice.h"
#include "worker/codec/SettingsText.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <thread>

namespace Morvane::Worker {

namespace {

/// Frames between the one handed over and the one that must have left the encoder, ours and the encoder's
/// together.
constexpr int mostFramesAhead = 48;
/// Frames of these that wait before the encoder.
constexpr int queuedFrames = 4;
/// The look-ahead grows with each thread of an encoder that works on whole frames.
constexpr int mostFrameThreads = 12;
/// B-pictures in a row that the presets allow, and the most that a person may.
constexpr int usualInARow = 3;
constexpr int mostInARow = 5;
/// Each of them looks at a strip of its own, and sees less of the picture's movement the thinner that is.
constexpr int mostLookAheadThreads = 4;
/// libx265 adds its frame threads and its own queue to this.
constexpr int x265LookAhead = 20;

using Options = std::map<std::string, std::string>;

void addOptions(Options& options, const std::string& text) {
    for (const auto& [key, value] : parseSettingPairs(text))
        options[key] = value;
}

void requireSensible(const EncodingRequest& request) {
    if (request.quality < 0 || request.quality > 5)
        throw StatusError(Status::BadArgument, fmt::format("quality {} is not from 0 to 5", request.quality));
    if (request.width < 1 || request.height < 1)
        throw StatusError(Status::BadArgument,
                          fmt::format("{} x {} is no picture size", request.width, request.height));
    if (request.rate.num < 1 || request.rate.den < 1)
        throw StatusError(Status::BadArgument,
                          fmt::format("{}/{} is no frame rate", request.rate.num, request.rate.den));
    if (request.keyFrameRate < 0)
        throw StatusError(Status::BadArgument,
                          fmt::format("key-frame rate {} is negative", request.keyFrameRate));
}

bool takesSize(const SizeRule& rule, int width, int height) {
    if (!rule.only.empty())
        return std::any_of(rule.only.begin(), rule.only.end(), [&](const SizeRule::Size& size) {
            return size.width == width && size.height == height;
        });
    return width % rule.multipleOfWidth == 0 && height % rule.multipleOfHeight == 0 &&
           width >= rule.minimumWidth && height >= rule.minimumHeight && width <= rule.maximum &&
           height <= rule.maximum;
}

[[noreturn]] void refuseSize(const EncodingRequest& request) {
    const Codec& codec = *request.settings.codec;
    if (std::max(request.width, request.height) > SizeRule().maximum)
        throw StatusError(Status::NotSupportedByCodec,
                          fmt::format("{} x {} is larger than {} x {}, the most that any codec here takes",
                                      request.width, request.height, SizeRule().maximum, SizeRule().maximum));
    throw StatusError(Status::NotSupportedByCodec,
                      fmt::format("{} cannot store {} x {} (it takes {}); Animation and PNG take any size",
                                  codec.name, request.width, request.height, codec.sizeSentence));
}

/// Each field of an interlaced picture must have whole chroma samples of its own.
void requireWholeFields(const EncodingRequest& request, const CodecPicture& picture) {
    if (request.settings.fields == AV_FIELD_PROGRESSIVE)
        return;
    const int rows = std::string_view(picture.chroma) == "420" ? 4 : 2;
    if (request.height % rows != 0)
        throw StatusError(
            Status::NotSupportedByCodec,
            fmt::format("{} cannot store interlaced pictures of {} rows; it takes multiples of {}",
                        request.settings.codec->name, request.height, rows));
}

bool saysHowGood(const CodecOption& option) {
    return option.encoderOption != nullptr && listHolds("qscale|crf|compression_level", option.encoderOption);
}

/// Whether the person set the quantiser or rate itself, so that the quality has no say.
bool qualityIsOverruled(const Settings& settings) {
    return std::any_of(settings.codec->options.begin(), settings.codec->options.end(),
                       [&](const CodecOption& option) {
                           return saysHowGood(option) && settings.codec->hasQuality() &&
                                  settings.option(option.key) != option.defaultValue;
                       });
}

bool isLossless(const EncodingRequest& request) {
    return request.quality == 5 && request.settings.codec->lossless == Lossless::AtLosslessQuality &&
           !qualityIsOverruled(request.settings);
}

/// The profile that a quality stands for ("" where it stands for none): the nearest step, first downwards,
/// whose profile has pictures of the depth and chroma that were asked for.
std::string profileOfQuality(const Settings& settings, int quality) {
    std::vector<int> steps;
    for (int step = quality; step >= 0; --step)
        steps.push_back(step);
    for (int step = quality + 1; step < 6; ++step)
        steps.push_back(step);
    for (const int step : steps) {
        Options options;
        addOptions(options, settings.codec->quality[step]);
        const auto profile = options.find("profile");
        if (profile != options.end() && choosePicture(*settings.codec, {.profile = profile->second,
                                                                        .chroma = settings.option("chroma"),
                                                                        .bits = settings.bits}))
            return profile->second;
    }
    return "";
}

std::string effectiveProfile(const EncodingRequest& request) {
    const Settings& settings = request.settings;
    if (settings.profile != "auto")
        return settings.profile;
    const std::string profile = profileOfQuality(settings, request.quality);
    return profile.empty() ? settings.profile : profile;
}

const CodecPicture& pictureOf(const EncodingRequest& request, const std::string& profile) {
    const Settings& settings = request.settings;
    if (!takesSize(settings.codec->sizes, request.width, request.height))
        refuseSize(request);
    PictureWish wish = {.profile = profile,
                        .chroma = settings.option("chroma"),
                        .bits = settings.bits,
                        .alpha = request.hasAlpha && settings.alpha != AlphaMode::None,
                        .lossless = isLossless(request),
                        .width = request.width,
                        .height = request.height};
    const CodecPicture* picture = choosePicture(*settings.codec, wish);
    if (!picture)
        refuseSize(request);
    requireWholeFields(request, *picture);
    return *picture;
}

const CodecProfile* findProfile(const Codec& codec, const std::string& name) {
    const auto found = std::find_if(codec.profiles.begin(), codec.profiles.end(),
                                    [&](const CodecProfile& profile) { return name == profile.name; });
    return found == codec.profiles.end() ? nullptr : &*found;
}

bool isX264(const std::string& encoder) {
    return encoder.rfind("libx264", 0) == 0;
}

/// Threads that one encoder uses itself. libx264 keeps all cores busy with half as many threads again.
int ownThreads(const Codec& codec, const std::string& encoder, int threads) {
    if (codec.intraOnly)
        return 1;
    return std::min(isX264(encoder) ? threads * 3 / 2 : threads, mostFrameThreads);
}

/// Bounds how many frames an encoder keeps before its first packet, where its preset would keep more. libx264
/// looks at all of them before it encodes the first, with a thread for every sixth of its own if it is left
/// to itself, which on few cores is one.
void boundLookAhead(Options& options, const std::string& preset, const EncodingPlan& plan) {
    if (!listHolds("medium|slow|slower|veryslow|placebo", preset))
        return;
    // With these presets the encoder looks four times as far as it may put B-pictures in a row.
    if (listHolds("veryslow|placebo", preset))
        options.emplace("bf", std::to_string(mostInARow));
    const int inARow = options.count("bf") ? std::stoi(options["bf"]) : usualInARow;
    const int ahead = mostFramesAhead - queuedFrames - plan.encoderThreads - (inARow + 1) - 1;
    if (isX264(plan.encoder)) {
        options["rc-lookahead"] = std::to_string(ahead);
        options["x264-params"] =
            fmt::format("lookahead-threads={}", std::min(plan.threads, mostLookAheadThreads));
    } else {
        options["rc-lookahead"] = std::to_string(std::min(ahead, x265LookAhead));
    }
}

/// libx265 takes its own options as one text.
void gatherX265Options(Options& options) {
    std::string parameters = "log-level=error";
    for (const char* key : {"lossless", "rc-lookahead"})
        if (const auto node = options.extract(key))
            parameters += fmt::format(":{}={}", key, node.mapped());
    options["x265-params"] = parameters;
}

/// For the encoder and its threads in `plan`.
Options encoderOptions(const EncodingRequest& request, const std::string& profile, const EncodingPlan& plan) {
    const Settings& settings = request.settings;
    const Codec& codec = *settings.codec;
    Options options;
    addOptions(options, codec.encoderOptions);
    if (!qualityIsOverruled(settings))
        addOptions(options, codec.quality[request.quality]);
    options.erase("profile");
    if (const CodecProfile* chosen = findProfile(codec, profile))
        addOptions(options, chosen->encoderOptions);
    for (const CodecOption& option : codec.options) {
        const std::string value = settings.option(option.key);
        if (option.encoderOption && value != "auto")
            options[option.encoderOption] = value;
    }
    if (isX264(plan.encoder) || plan.encoder == "libx265")
        boundLookAhead(options, settings.option("preset"), plan);
    if (plan.encoder == "libx265")
        gatherX265Options(options);
    return options;
}

/// The encoder of the picture, else of the codec.
std::string encoderOf(const EncodingRequest& request, const CodecPicture& picture) {
    return picture.encoder ? picture.encoder : request.settings.codec->encoder;
}

ColourDecision colourOf(const Settings& settings, const CodecPicture& picture) {
    ColourDecision colour = settings.colour;
    if (std::string_view(picture.chroma) != "rgb")
        return colour;
    colour.range = AVCOL_RANGE_JPEG;
    // A bitstream that states its matrix must say that there is none.
    if (settings.codec->colour == ColourModel::AnyRange)
        colour.matrix = AVCOL_SPC_RGB;
    return colour;
}

}  // namespace

EncodingPlan planEncoding(const EncodingRequest& request) {
    requireSensible(request);
    const Settings& settings = request.settings;
    const Codec& codec = *settings.codec;
    const std::string profile = effectiveProfile(request);
    const CodecProfile* chosen = findProfile(codec, profile);
    EncodingPlan plan;
    plan.codec = &codec;
    plan.picture = &pictureOf(request, profile);
    plan.encoder = encoderOf(request, *plan.picture);
    plan.tag = codecTag(chosen && chosen->type ? chosen->type : codec.type);
    plan.width = request.width;
    plan.height = request.height;
    plan.rate = request.rate;
    plan.sourceHasAlpha = request.hasAlpha;
    plan.alpha = plan.picture->alpha && request.hasAlpha ? settings.alpha : AlphaMode::None;
    plan.curve = settings.curve;
    plan.colour = colourOf(settings, *plan.picture);
    plan.fields = settings.fields;
    plan.aspect = settings.aspect.num != 0 ? settings.aspect : codec.aspect;
    plan.keyFrameRate = request.keyFrameRate;
    plan.threads = settings.threads != 0 ? settings.threads
                                         : std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    plan.encoderThreads = ownThreads(codec, plan.encoder, plan.threads);
    const Options options = encoderOptions(request, profile, plan);
    plan.options.assign(options.begin(), options.end());
    return plan;
}

int sampleDescriptionDepth(const EncodingPlan& plan) {
    if (plan.picture->order == SampleOrder::Palette)
        return 8;
    return plan.picture->alpha ? 32 : 24;
}

}  // namespace Morvane::Worker
