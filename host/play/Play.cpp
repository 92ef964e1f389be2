#include "host/play/Play.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <array>
#include <future>
#include <memory>
#include <optional>
#include <thread>

#include "Kex/Image/LUT.h"
#include "host/colour/BrokenPixels.h"
#include "host/images/ImageSequence.h"
#include "host/movies/MovieSource.h"
#include "host/play/FrameFit.h"
#include "host/play/OutputChoice.h"
#include "host/play/OutputHelper.h"
#include "host/play/PlayProgress.h"
#include "host/render/Curves.h"
#include "host/render/HelperSession.h"
#include "host/render/ReadAhead.h"

namespace Corvel {

using Morvane::QuickTime::QuickTimeVideoOutputInterface;
using Morvane::QuickTime::VideoOutputMode;

namespace {

constexpr int displayCurve = 6;  // sRGB
constexpr std::int32_t windowClosed = -128;
constexpr std::size_t readAheadBytes = std::size_t{512} << 20;

// A loop of a few frames is laid out so many times over that starting anew is rare.
constexpr std::size_t framesOfARound = 100;

const Kex::Image::LUT* curveOr(const std::string& name, const Kex::Image::LUT* otherwise) {
    return name.empty() ? otherwise : curveNamed(name);
}

std::uint64_t frameBytes(const VideoOutputMode& mode) {
    return std::uint64_t{16} * static_cast<std::uint64_t>(mode.width) *
           static_cast<std::uint64_t>(mode.height);
}

FrameFit fitFor(const PlayRequest& request, const VideoOutputMode& mode) {
    return {mode.width, mode.height, *curveOr(request.lut, Kex::Image::LUT::getLut(displayCurve))};
}

std::unique_ptr<FrameSource> openInput(const PlayRequest& request, HelperSession& session) {
    const Kex::Image::LUT* curve = curveOr(request.inputLut, nullptr);
    if (isMovieName(request.input)) {
        return std::make_unique<MovieSource>(moviePath(request.input, request.choice), curve, session);
    }
    return std::make_unique<ImageSequence>(request.input, curve, request.choice);
}

/// Playing, once input, device and mode are settled.
class PlayRun {
public:
    PlayRun(const PlayRequest& request, const FrameSource& source, const std::vector<PlannedFrame>& plan,
            const VideoOutputMode& mode, HelperSession& session, QuickTimeVideoOutputInterface& output,
            Console& console)
        : request(request),
          source(source),
          plan(plan),
          mode(mode),
          session(session),
          output(output),
          fits{fitFor(request, mode), fitFor(request, mode)},
          progress(console, request.loop ? 0 : static_cast<int>(plan.size())) {}

    Exit run();

private:
    enum class Outcome { AllSent, WindowClosed, Interrupted };

    struct ReadyFrame {
        int number;
        const float* pixels;  ///< as the output wants them
    };

    void open();
    ReadAhead::Limits limits() const;
    std::vector<PlannedFrame> round() const;
    Outcome playRound();
    static std::optional<ReadyFrame> makeReady(ReadAhead& frames, FrameFit& fit);
    bool send(const ReadyFrame& frame);

    const PlayRequest& request;
    const FrameSource& source;
    const std::vector<PlannedFrame>& plan;
    const VideoOutputMode& mode;
    HelperSession& session;
    QuickTimeVideoOutputInterface& output;
    std::array<FrameFit, 2> fits;  ///< used in turn
    const std::shared_ptr<BrokenPixels> broken = std::make_shared<BrokenPixels>();
    PlayProgress progress;
};

Exit PlayRun::run() {
    open();
    Outcome outcome = playRound();
    while (request.loop && outcome == Outcome::AllSent) {
        outcome = playRound();
    }
    if (outcome == Outcome::Interrupted) {
        return Exit::Interrupted;
    }
    session.setActivity("showing the last frames");
    output.closeOutput();
    return Exit::Done;
}

void PlayRun::open() {
    session.setActivity("opening the video output");
    const std::int32_t status = output.selectMode(mode, request.fullScreen ? 1 : 0);
    if (status != 0) {
        throw Failure(Exit::NodeFailed, fmt::format("the video output can't be opened ({})", status));
    }
    if (output.getFrameSize() != frameBytes(mode)) {
        throw Failure(Exit::NodeFailed, "the video output wants frames of another size than its mode has");
    }
}

ReadAhead::Limits PlayRun::limits() const {
    const unsigned threads =
        request.threads != 0 ? request.threads : std::max(std::thread::hardware_concurrency(), 1U);
    const auto real = std::find_if(plan.begin(), plan.end(),
                                   [](const PlannedFrame& frame) { return frame.source.has_value(); });
    const Window size = source.header(*real->source).display;
    // Reading a file takes as much scratch memory as its picture.
    return ReadAhead::limitsFor(std::min(threads, source.mostReaders()),
                                2 * Picture::bytes(size.width, size.height, 4), readAheadBytes);
}

std::vector<PlannedFrame> PlayRun::round() const {
    std::vector<PlannedFrame> frames = plan;
    while (request.loop && frames.size() < framesOfARound) {
        frames.insert(frames.end(), plan.begin(), plan.end());
    }
    return frames;
}

/// Takes the next frame and makes it ready; nothing after the last one.
std::optional<PlayRun::ReadyFrame> PlayRun::makeReady(ReadAhead& frames, FrameFit& fit) {
    const auto frame = frames.next();
    if (!frame) {
        return std::nullopt;
    }
    return ReadyFrame{frame->planned.number, fit.fit(frame->picture, frame->header.pixelAspect)};
}

PlayRun::Outcome PlayRun::playRound() {
    const auto mending = [this] {
        PictureSteps steps;
        steps.push_back(makeMendingStep(broken));
        return steps;
    };
    ReadAhead frames(source, round(), limits(), mending);
    // While one frame is handed over, which includes waiting for its turn, the next one is made ready.
    std::size_t next = 0;
    const auto begin = [&] {
        next = 1 - next;
        return std::async(std::launch::async,
                          [&frames, &fit = fits[next]] { return makeReady(frames, fit); });
    };
    for (auto upcoming = begin();;) {
        const std::optional<ReadyFrame> frame = upcoming.get();
        if (!frame) {
            return Outcome::AllSent;
        }
        upcoming = begin();
        if (session.interrupts().count() > 0) {
            return Outcome::Interrupted;
        }
        if (!send(*frame)) {
            return Outcome::WindowClosed;
        }
    }
}

/// False when there is no window any more to show it in.
bool PlayRun::send(const ReadyFrame& frame) {
    session.setActivity(fmt::format("showing frame {}", frame.number));
    const std::int32_t status = output.sendFrame(reinterpret_cast<const char*>(frame.pixels));
    session.setIdle("waiting for a frame");
    if (status != 0 && status != windowClosed) {
        throw Failure(Exit::NodeFailed, fmt::format("frame {} was not shown ({})", frame.number, status));
    }
    if (status == 0) {
        progress.sent(frame.number);
    }
    return status == 0;
}

}  // namespace

Exit play(const PlayRequest& request, Console& console, Reporter& reporter) {
    const std::vector<OutputDeviceEntry> devices = askForOutputDevices(reporter);
    const ChosenDevice device = chooseDevice(devices, request.device);
    const VideoOutputMode& mode = chooseMode(*device.entry, request.mode);
    // A movie's frames, too, come out of a helper.
    HelperSession session(frameBytes(mode) * 2, reporter);
    const std::unique_ptr<FrameSource> source = openInput(request, session);
    const std::vector<PlannedFrame> plan = planFrames(*source, request.frames, request.missing);
    OutputHelper helper(device.entry->handle, device.name, session);
    return PlayRun(request, *source, plan, mode, session, helper.output(), console).run();
}

}  // namespace Corvel
