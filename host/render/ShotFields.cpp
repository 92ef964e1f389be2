#include "host/render/ShotFields.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "host/burnin/FieldNames.h"
#include "host/images/ImageReader.h"
#include "host/images/StereoName.h"
#include "host/movies/MovieSource.h"
#include "host/movies/RunningTimecode.h"
#include "timecode/FrameRate.h"

namespace Corvel {
namespace {

std::string fileNameOf(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

std::string entryOf(const Metadata& metadata, const std::string& key) {
    const auto found = metadata.find(key);
    return found == metadata.end() ? "" : found->second;
}

// What a list's knob shows, without the codec's type in front of it.
std::string knobText(const Kex::Image::Write& node, const char* name) {
    const Kex::Image::Knob* const knob = node.knob(name);
    const std::string text = knob ? knob->get_text() : "";
    return text.substr(text.find('\t') + 1);
}

}  // namespace

std::string shotNameOf(const std::string& input) {
    std::string name = std::filesystem::path(input).stem().string();
    // The number or what stands for it: shot.1001, shot.####, shot.%04d, shot_@@@.
    while (!name.empty() && (std::isdigit(static_cast<unsigned char>(name.back())) || name.back() == '#' ||
                             name.back() == '@')) {
        name.pop_back();
    }
    if (name.size() >= 2 && name.back() == 'd') {
        const std::size_t percent = name.rfind('%');
        name = percent == std::string::npos ? name : name.substr(0, percent);
    }
    const std::size_t end = name.find_last_not_of("._-");
    return end == std::string::npos ? std::filesystem::path(input).stem().string() : name.substr(0, end + 1);
}

ShotFields::ShotFields(const RenderRequest& asked, const RenderPlan& planned, const Kex::Image::Write* node)
    : request(asked), plan(planned) {
    addFrames();
    addCodec(node);
    addPlace();
    constant["name"] = shotNameOf(pathOfView(request.input, request.choice));
    constant["shot"] = constant["name"];
    constant["input"] = fileNameOf(pathOfView(request.input, request.choice));
    constant["output"] = fileNameOf(request.output);
    constant["reel"] = entryOf(plan.metadata, "quicktime/reel");
    for (const auto& [field, value] : request.burnIns.fields) {
        constant[field] = value;
    }
}

void ShotFields::addFrames() {
    const std::ptrdiff_t slates = plan.slate ? 1 : 0;
    const auto [first, last] =
        std::minmax_element(plan.frames.begin() + slates, plan.frames.end(),
                            [](const PlannedFrame& a, const PlannedFrame& b) { return a.shown < b.shown; });
    constant["first"] = std::int64_t{first->shown};
    constant["last"] = std::int64_t{last->shown};
    constant["frames"] = static_cast<std::int64_t>(plan.frames.size()) - slates;
    constant["width"] = std::int64_t{plan.format.width()};
    constant["height"] = std::int64_t{plan.format.height()};
}

void ShotFields::addCodec(const Kex::Image::Write* node) {
    const Kex::Image::Knob* const knob = node ? node->knob("fps") : nullptr;
    const std::string stated = entryOf(plan.metadata, "input/frame_rate");
    const double rate = knob ? knob->get_value() : std::strtod(stated.c_str(), nullptr);
    constant["fps"] = rate > 0 ? fmt::format("{:.6g}", rate) : "";
    timecodeRate = static_cast<int>(
        Morvane::Timecode::toFrameRateCode(rate > 0 ? static_cast<float>(rate) : 24.0F).nominalRate());
    if (node) {
        constant["codec"] = knobText(*node, "codec");
        constant["quality"] = knobText(*node, "quality");
    } else {
        constant["codec"] = std::filesystem::path(request.output).extension().string();
    }
    constant["start_timecode"] = timecodeAt(plan.slate ? 1 : 0);
    constant["end_timecode"] = timecodeAt(plan.frames.size() - 1);
}

void ShotFields::addPlace() {
    const std::int64_t now = std::time(nullptr);
    constant["date"] = now;
    constant["time"] = now;
    const char* const user = std::getenv("USER");
    constant["user"] = user ? user : "";
    std::array<char, 256> host{};
    constant["host"] = gethostname(host.data(), host.size() - 1) == 0 ? host.data() : "";
}

std::string ShotFields::timecodeAt(std::size_t position) const {
    const std::string start = entryOf(plan.metadata, "input/timecode");
    return timecodeAfter(start, static_cast<int>(position) - plan.timecodeLead, timecodeRate);
}

std::string ShotFields::fileAt(std::size_t position) const {
    const PlannedFrame& frame = plan.frames[position];
    if (isMovieName(request.input)) {
        return fileNameOf(pathOfView(request.input, request.choice));
    }
    return frame.source ? fileNameOf(plan.source->nameOf(*frame.source)) : "";
}

std::string ShotFields::metadata(const PictureHeader& header, const std::string& key) const {
    const Metadata attributes = attributesOf(header);
    for (const Metadata* entries : {&attributes, &header.metadata, &plan.metadata}) {
        if (const std::string value = entryOf(*entries, key); !value.empty()) {
            return value;
        }
    }
    for (const auto& [name, value] : request.metadata) {
        if (name == key) {
            return value;
        }
    }
    return "";
}

FieldValue ShotFields::valueOf(const FrameUnderWay& frame, const std::string& field,
                               const std::string& argument) const {
    if (field == metadataField) {
        return metadata(frame.header, argument);
    }
    // What a person says about a field goes before what is known of it.
    if (const auto found = constant.find(field); found != constant.end()) {
        return found->second;
    }
    if (field == "frame") {
        return std::int64_t{plan.frames[frame.position].shown};
    }
    if (field == "timecode") {
        return timecodeAt(frame.position);
    }
    return field == "file" ? fileAt(frame.position) : "";
}

}  // namespace Corvel
