#include "host/render/RenderImages.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <exception>
#include <future>
#include <optional>
#include <thread>

#include "filesystem/FileSystem.h"
#include "host/images/ImageWriter.h"
#include "host/images/SequencePattern.h"
#include "host/movies/MovieSource.h"
#include "host/movies/RunningTimecode.h"
#include "host/render/MovieStart.h"
#include "host/render/RateMeter.h"
#include "host/render/Reason.h"
#include "timecode/FrameRate.h"

namespace Corvel {
namespace {

using Clock = std::chrono::steady_clock;

// Frames a second as time codes count them.
int nominalRateOf(const RenderPlan& plan) {
    if (const auto counted = plan.metadata.find("quicktime/timecode_rate"); counted != plan.metadata.end()) {
        return std::atoi(counted->second.c_str());
    }
    const auto rate = plan.metadata.find("input/frame_rate");
    const float fps = rate == plan.metadata.end() ? 24.0f : std::strtof(rate->second.c_str(), nullptr);
    return static_cast<int>(Morvane::Timecode::toFrameRateCode(fps).nominalRate());
}

// A frame that is being written, with a picture of its own.
struct Writing {
    int frame;
    std::string path;
    std::future<void> done;
};

class ImageRun {
public:
    ImageRun(const RenderRequest& renderRequest, const RenderPlan& renderPlan, HelperSession& session,
             Reporter& listener)
        : request(renderRequest),
          plan(renderPlan),
          helpers(session),
          reporter(listener),
          pattern(SequencePattern::parse(request.output)),
          writers(request.threads != 0 ? request.threads
                                       : std::max(std::thread::hardware_concurrency(), 1u)) {}

    Exit run();

private:
    void writeFrames();
    void write(const ReadAhead::Frame& frame);
    PictureHeader headerOf(const ReadAhead::Frame& frame) const;
    void finishOldest();

    const RenderRequest& request;
    const RenderPlan& plan;
    HelperSession& helpers;
    Reporter& reporter;
    const std::optional<SequencePattern> pattern;
    const std::size_t writers;
    std::deque<Writing> underWay;
    int taken = 0;  // frames of the plan
    int written = 0;
    std::uint64_t bytes = 0;
    const Clock::time_point start = Clock::now();
    RateMeter rate{start};
};

Exit ImageRun::run() {
    reporter.start(
        {static_cast<int>(plan.frames.size()), plan.format.width(), plan.format.height(), request.output});
    Exit outcome = Exit::Done;
    try {
        writeFrames();
    } catch (const UnreadableImage& error) {
        spdlog::error("{} (frame {})", error.what(), plan.frames[static_cast<std::size_t>(taken)].number);
        outcome = Exit::InputUnreadable;
    } catch (const std::exception& error) {
        spdlog::error(reasonOf(error));
        outcome = Exit::NodeFailed;
    }
    // What has been begun is finished whatever happened to others.
    while (!underWay.empty()) {
        try {
            finishOldest();
        } catch (const std::exception& error) {
            spdlog::error(reasonOf(error));
            outcome = Exit::NodeFailed;
        }
    }
    plan.broken->tellTotal();
    const int total = static_cast<int>(plan.frames.size());
    if (outcome == Exit::Done && written < total) {
        outcome = Exit::Interrupted;
    }
    if (outcome != Exit::Done) {
        spdlog::error("{} of {} frames were written", written, total);
    }
    reporter.end({.exit = static_cast<int>(outcome),
                  .output = written > 0 ? request.output : "",
                  .frames = written,
                  .bytes = bytes,
                  .seconds = std::chrono::duration<double>(Clock::now() - start).count()});
    return outcome;
}

void ImageRun::writeFrames() {
    ReadAhead frames(*plan.source, plan.frames, readAheadLimits(request, plan), plan.steps,
                     blankHeader(plan));
    const bool fromMovie = isMovieName(request.input);
    while (helpers.interrupts().count() == 0) {
        // A movie's frames come from a helper.
        fromMovie ? helpers.setActivity("reading frames") : helpers.setIdle("reading frames");
        const auto frame = frames.next();
        helpers.setIdle("writing frames");
        if (!frame) {
            return;
        }
        write(*frame);
        ++taken;
    }
}

void ImageRun::write(const ReadAhead::Frame& frame) {
    while (underWay.size() >= writers) {
        finishOldest();
    }
    const int number = frame.planned.number;
    const std::string path = pattern ? pattern->pathOf(number) : request.output;
    // The picture is lent until the next frame only.
    Picture picture;
    picture.reset(plan.format.width(), plan.format.height(), plan.depth);
    picture.clear();
    for (int channel = 0; frame.picture != nullptr && channel < picture.channels(); ++channel) {
        for (int y = 0; y < std::min(picture.height(), frame.picture->height()); ++y) {
            float* to = picture.row(channel, y);
            const std::size_t count =
                static_cast<std::size_t>(std::min(picture.width(), frame.picture->width()));
            if (channel < frame.picture->channels()) {
                std::copy_n(frame.picture->row(channel, y), count, to);
            } else {
                std::fill_n(to, count, 1.0f);
            }
        }
    }
    const ImageValues values = plan.colour ? ImageValues::AsTheyAre : ImageValues::LinearLight;
    underWay.push_back(
        {number, path,
         std::async(std::launch::async, [path, header = headerOf(frame), owned = std::move(picture), values] {
             writeImage(path, owned, header, values);
         })});
}

PictureHeader ImageRun::headerOf(const ReadAhead::Frame& frame) const {
    PictureHeader header = frame.header;
    header.pixelAspect = plan.format.pixelAspect();
    for (const auto& [key, value] : plan.metadata) {
        header.metadata.emplace(key, value);
    }
    // A frame that fills a gap has the header of another one, or none; a time code from the person counts
    // from the first frame.
    const bool isSlate = plan.slate && frame.planned == plan.frames.front();
    const auto first = plan.metadata.find("input/timecode");
    if (first != plan.metadata.end() && (!request.timecode.empty() || frame.planned.isFilled() || isSlate)) {
        const int position = frame.planned.number - plan.frames.front().number - plan.timecodeLead;
        header.metadata["input/timecode"] = timecodeAfter(first->second, position, nominalRateOf(plan));
    }
    if (!request.reel.empty()) {
        header.metadata["quicktime/reel"] = request.reel;
    }
    return header;
}

void ImageRun::finishOldest() {
    Writing oldest = std::move(underWay.front());
    underWay.pop_front();
    oldest.done.get();
    ++written;
    bytes += Morvane::FileSystem::fileSize(oldest.path);
    rate.add(Clock::now());
    const int total = static_cast<int>(plan.frames.size());
    reporter.progress({.frame = oldest.frame,
                       .done = written,
                       .total = total,
                       .fraction = 0,
                       .fps = rate.framesPerSecond(),
                       .secondsLeft = rate.secondsFor(total - written),
                       .bytes = bytes},
                      true);
}

void checkOptions(const RenderRequest& request, const RenderPlan& plan) {
    if (!request.timecode.empty()) {
        const int rate = std::max(nominalRateOf(plan), 1);
        const std::string fault = timecodeFault(
            request.timecode, Morvane::Timecode::FrameRate(static_cast<std::uint32_t>(rate), false));
        if (!fault.empty()) {
            throw Failure(Exit::Usage, fault);
        }
    }
    const auto travels = [](const auto& pair) {
        return pair.first.rfind("input/", 0) == 0 || pair.first.rfind("quicktime/", 0) == 0;
    };
    if (!std::all_of(request.metadata.begin(), request.metadata.end(), travels)) {
        throw Failure(Exit::Usage, "images carry time code, reel and rate only; leave --metadata out");
    }
    if (!request.knobs.empty() || request.advanced) {
        throw Failure(Exit::Usage, "images have no codec settings; leave the Write node's options out");
    }
    if (!request.lut.empty()) {
        throw Failure(Exit::Usage, "images have their file format's own curve; leave --lut out");
    }
}

}  // namespace

bool writesImages(const std::string& output) {
    return isWritableImageName(output);
}

Exit renderImages(const RenderRequest& request, const RenderPlan& plan, HelperSession& helpers,
                  Reporter& reporter) {
    checkOptions(request, plan);
    if (!SequencePattern::parse(request.output) && plan.frames.size() > 1) {
        throw Failure(Exit::Usage, fmt::format("{} names one image, but there are {} frames; name them "
                                               "like shot.####.exr",
                                               request.output, plan.frames.size()));
    }
    if (request.dryRun) {
        fmt::print("would write {} frames of {} x {} pixels as {}\n", plan.frames.size(), plan.format.width(),
                   plan.format.height(), request.output);
        reporter.end({});
        return Exit::Done;
    }
    return ImageRun(request, plan, helpers, reporter).run();
}

}  // namespace Corvel
