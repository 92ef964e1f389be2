#include "host/render/Render.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <exception>
#include <memory>
#include <utility>

#include "Kex/Image/Writer.h"
#include "filesystem/FileSystem.h"
#include "host/movies/MovieSource.h"
#include "host/render/BurnIns.h"
#include "host/render/DryRun.h"
#include "host/render/NodeHost.h"
#include "host/render/OutputGuard.h"
#include "host/render/OutputPath.h"
#include "host/render/RateMeter.h"
#include "host/render/ReadAhead.h"
#include "host/render/Reason.h"
#include "host/render/RenderImages.h"
#include "host/render/RenderPlan.h"
#include "host/render/RenderSetup.h"

namespace Corvel {
namespace {

using Clock = std::chrono::steady_clock;

/// One render after everything has been settled: the loop over the frames and the end of the movie.
class RenderRun {
public:
    RenderRun(const RenderRequest& request, const RenderPlan& plan, std::unique_ptr<ReadAhead> frames,
              NodeHost& host, Reporter& reporter)
        : request(request), plan(plan), frames(std::move(frames)), host(host), reporter(reporter) {}

    Exit run();

private:
    Exit writeFrames();
    Exit writeFrame(const ReadAhead::Frame& frame);
    void waitForFrame();
    std::string finishMovie(Exit& outcome);
    void tell(int frame, double fraction, bool frameDone);

    const RenderRequest& request;
    const RenderPlan& plan;
    std::unique_ptr<ReadAhead> frames;  ///< null once all are written
    NodeHost& host;
    Reporter& reporter;
    std::string temporary;
    int written = 0;          // frames
    std::uint64_t bytes = 0;  // of the movie, when the last frame was done
    const Clock::time_point start = Clock::now();
    RateMeter rate{start};
};

Exit RenderRun::run() {
    reporter.start(
        {static_cast<int>(plan.frames.size()), plan.format.width(), plan.format.height(), request.output});
    temporary = host.node().writer()->createFileHash();
    host.helper().setPartialFile(temporary);
    waitForFrame();
    Exit outcome = writeFrames();
    frames.reset();
    std::string kept;
    if (written > 0) {
        kept = finishMovie(outcome);
    } else {
        Morvane::FileSystem::remove(temporary);
    }
    host.helper().expectEnd();
    plan.broken->tellTotal();
    if (outcome != Exit::Done && kept.empty()) {
        spdlog::error("no movie was written");
    } else if (outcome != Exit::Done) {
        spdlog::error("the movie so far, {} of {} frames, is in {}", written, plan.frames.size(), kept);
    }
    reporter.end({.exit = static_cast<int>(outcome),
                  .output = kept,
                  .frames = written,
                  .bytes = Morvane::FileSystem::fileSize(kept),
                  .seconds = std::chrono::duration<double>(Clock::now() - start).count()});
    return outcome;
}

Exit RenderRun::writeFrames() {
    try {
        while (const auto frame = frames->next()) {
            if (host.helper().interrupts().count() > 0) {
                break;
            }
            if (const Exit outcome = writeFrame(*frame); outcome != Exit::Done) {
                return outcome;
            }
        }
    } catch (const UnreadableImage& error) {
        spdlog::error("{} (frame {})", error.what(), plan.frames[static_cast<std::size_t>(written)].number);
        return Exit::InputUnreadable;
    } catch (const std::exception& error) {
        // Out of memory, say: what there is of the movie is kept all the same.
        spdlog::error("frame {}: {}", plan.frames[static_cast<std::size_t>(written)].number, reasonOf(error));
        return Exit::NodeFailed;
    }
    return written == static_cast<int>(plan.frames.size()) ? Exit::Done : Exit::Interrupted;
}

Exit RenderRun::writeFrame(const ReadAhead::Frame& frame) {
    const int number = frame.planned.number;
    if (frame.picture != nullptr) {
        checkSize(plan, frame.planned, frame.header);
    }
    host.helper().setActivity(fmt::format("writing frame {}", number));
    host.onFrameFraction([this, number](double fraction) { tell(number, fraction, false); });
    host.picture().show(frame.picture);
    host.node().execute(number);
    if (host.node().failed()) {
        spdlog::error("frame {} was not written", number);
        return Exit::NodeFailed;
    }
    ++written;
    rate.add(Clock::now());
    tell(number, 0, true);
    waitForFrame();
    return Exit::Done;
}

void RenderRun::waitForFrame() {
    constexpr const char* activity = "waiting for a frame";
    if (isMovieName(request.input)) {
        host.helper().setActivity(activity);  // another helper's
    } else {
        host.helper().setIdle(activity);
    }
}

std::string RenderRun::finishMovie(Exit& outcome) {
    try {
        OutputGuard guard(request.output, request.overwrite);
        guard.setAside();
        host.helper().setActivity("finishing the movie");
        host.node().clearFailure();
        host.node().finish();
        if (host.node().failed() && outcome == Exit::Done) {
            outcome = Exit::NodeFailed;
        }
        return guard.settle(outcome == Exit::Done);
    } catch (const Failure& failure) {
        spdlog::error(failure.what());
        outcome = outcome == Exit::Done ? failure.code : outcome;
        return Morvane::FileSystem::exists(temporary) ? temporary : "";
    }
}

void RenderRun::tell(int frame, double fraction, bool frameDone) {
    const int total = static_cast<int>(plan.frames.size());
    bytes = frameDone ? Morvane::FileSystem::fileSize(temporary) : bytes;
    reporter.progress({.frame = frame,
                       .done = written,
                       .total = total,
                       .fraction = fraction,
                       .fps = rate.framesPerSecond(),
                       .secondsLeft = rate.secondsFor(total - written),
                       .bytes = bytes},
                      frameDone);
}

std::unique_ptr<ReadAhead> readAhead(const RenderRequest& request, const RenderPlan& plan) {
    return std::make_unique<ReadAhead>(*plan.source, plan.frames, readAheadLimits(request, plan), plan.steps,
                                       blankHeader(plan), ReadAhead::Samples::AlsoCodes);
}

/// Whether reading may begin while the helper starts, which takes as long as some frames. Not where there may
/// be no render, where a movie's own helper is at work then, or where what is written into the pictures is
/// still to come from the node.
bool mayReadAtOnce(const RenderRequest& request, const RenderPlan& plan) {
    return !request.dryRun && !request.advanced && !isMovieName(request.input) && !plan.burnIn && !plan.slate;
}

}  // namespace

Exit render(const RenderRequest& asked, Reporter& reporter) {
    RenderRequest request = asked;
    request.output = outputBehindLinks(asked.output);
    RenderSetup setup = setUpRender(request, reporter);
    RenderPlan& plan = setup.plan;
    if (writesImages(request.output)) {
        addBurnIns(request, plan, nullptr);
        return renderImages(request, plan, *setup.helpers, reporter);
    }
    std::unique_ptr<ReadAhead> frames;
    if (mayReadAtOnce(request, plan)) {
        frames = readAhead(request, plan);
    }
    const std::unique_ptr<NodeHost> host = setUpNode(request, request.output, setup);
    if (request.dryRun) {
        fmt::print("{}", dryRunText(request, plan, host->node()));
        reporter.end({});
        return Exit::Done;
    }
    if (!frames) {
        frames = readAhead(request, plan);
    }
    return RenderRun(request, plan, std::move(frames), *host, reporter).run();
}

}  // namespace Corvel
