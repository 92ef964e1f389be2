#include "host/render/RenderPlan.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <thread>

#include "Kex/Image/LUT.h"
#include "host/images/SequencePattern.h"
#include "host/movies/MovieSource.h"
#include "host/render/BurnIns.h"
#include "host/render/ColourPlan.h"
#include "host/render/Curves.h"
#include "host/render/Failure.h"
#include "host/render/PictureSteps.h"

namespace Corvel {
namespace {

// Pictures and the readers' own memory, whatever the length of the render.
constexpr std::size_t readAheadBytes = std::size_t{512} << 20;

void checkOutput(const std::string& output, bool overwrite) {
    std::error_code error;
    const std::filesystem::path path(output);
    const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
    if (!std::filesystem::is_directory(folder, error)) {
        throw Failure(Exit::Usage,
                      fmt::format("cannot write {}: there is no folder {}", output, folder.string()));
    }
    if (access(folder.c_str(), W_OK | X_OK) != 0) {
        throw Failure(Exit::Usage, fmt::format("cannot write {}: the folder {} can't be written: {}", output,
                                               folder.string(), std::strerror(errno)));
    }
    if (std::filesystem::is_directory(path, error)) {
        throw Failure(Exit::Usage, fmt::format("cannot write {}: it is a folder", output));
    }
    const auto images = isMovieName(output) ? std::nullopt : SequencePattern::parse(output);
    if (images) {
        if (const std::map<int, std::string> files = images->findFiles(); !files.empty() && !overwrite) {
            throw Failure(Exit::Usage,
                          fmt::format("{} exists already; -y replaces it", files.begin()->second));
        }
    } else if (std::filesystem::exists(std::filesystem::symlink_status(path, error)) && !overwrite) {
        throw Failure(Exit::Usage, fmt::format("{} exists already; -y replaces it", output));
    }
}

// The first frame of the movie that is a frame of the input.
std::size_t firstRealFrame(const std::vector<PlannedFrame>& frames) {
    const auto real = std::find_if(frames.begin(), frames.end(),
                                   [](const PlannedFrame& frame) { return !frame.isFilled(); });
    return static_cast<std::size_t>(real - frames.begin());
}

// Keys of the host's own, such as "input/timecode"; the others travel in the codec settings.
bool isNodeKey(const std::string& key) {
    return key.rfind("input/", 0) == 0 || key.rfind("quicktime/", 0) == 0;
}

void addRequested(const RenderRequest& request, RenderPlan& plan) {
    for (const auto& [key, value] : request.metadata) {
        if (isNodeKey(key)) {
            plan.metadata[key] = value;
        }
    }
    if (!request.timecode.empty()) {
        plan.metadata["input/timecode"] = request.timecode;
        plan.timecodeLead = 0;
    }
    if (!request.reel.empty()) {
        plan.metadata["quicktime/reel"] = request.reel;
    }
}

}  // namespace

std::uint64_t frameBytes(const Kex::Image::Format& format) {
    return std::uint64_t{16} * static_cast<std::uint64_t>(format.width()) *
           static_cast<std::uint64_t>(format.height());
}

PictureHeader blankHeader(const RenderPlan& plan) {
    PictureHeader header;
    header.display = header.data = plan.picture;
    header.pixelAspect = plan.format.pixelAspect();
    header.hasAlpha = plan.depth == 4;
    return header;
}

ReadAhead::Limits readAheadLimits(const RenderRequest& request, const RenderPlan& plan) {
    const unsigned threads =
        request.threads != 0 ? request.threads : std::max(std::thread::hardware_concurrency(), 1u);
    // Reading a file takes as much scratch memory as its picture.
    const std::size_t pictureBytes =
        2 * std::max(Picture::bytes(plan.picture.width, plan.picture.height, 4),
                     Picture::bytes(plan.format.width(), plan.format.height(), 4));
    return ReadAhead::limitsFor(std::min(threads, plan.source->mostReaders()), pictureBytes, readAheadBytes);
}

RenderPlan planRender(const RenderRequest& request, const OpenInput& openInput) {
    RenderPlan plan;
    plan.lut = request.lut.empty() ? nullptr : curveNamed(request.lut);
    const Kex::Image::LUT* inputCurve = request.inputLut.empty() ? nullptr : curveNamed(request.inputLut);
    if (request.colour.wanted()) {
        // Values stay as they are on their way into and out of the colour transform.
        inputCurve = plan.lut = Kex::Image::LUT::getLut(0);
    }
    plan.burnIn = planBurnIns(request.burnIns);
    plan.slate = planSlate(request.burnIns);
    checkOutput(request.output, request.overwrite || request.dryRun);
    plan.source = openInput(inputCurve);
    plan.frames = planFrames(*plan.source, request.frames, request.missing, request.order);

    const std::size_t first = firstRealFrame(plan.frames);
    const PictureHeader header = plan.source->header(*plan.frames[first].source);
    plan.picture = {0, 0, header.display.width, header.display.height};
    plan.format = formatFor(request, header);
    plan.depth = request.channels.value_or(header.hasAlpha ? 4 : 3);
    plan.picked = header.picked;
    plan.metadata = header.metadata;
    plan.timecodeLead = static_cast<int>(first);
    addRequested(request, plan);
    plan.colour = planColour(request, header);
    if (plan.slate) {
        addSlateFrame(plan);
    }
    plan.steps = stepsFor(request, header, plan);
    return plan;
}

}  // namespace Corvel
