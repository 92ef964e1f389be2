#include "host/render/HelperSession.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <iterator>

#include "filesystem/FileSystem.h"
#include "host/render/HelperProcesses.h"
#include "host/render/Sweep.h"
#include "platform/OpenFiles.h"
#include "platform/Room.h"
#include "quicktime/SharedObjects.h"

namespace Corvel {
namespace {

// Room for the helper's longest answer besides a frame.
constexpr std::uint64_t answerBytes = 1 << 20;

// How long to wait for the last words of a helper that has died.
constexpr std::chrono::milliseconds lastWords(200);

// For helpers that are given up: they keep what is written of a movie playable.
constexpr std::chrono::milliseconds graceWhenGivenUp(1000);

// For helpers that end in the ordinary way; they see to it themselves that it takes no longer than 10
// seconds.
constexpr std::chrono::seconds graceAtEnd(12);

// What a helper's bridge, its output and its watch take, and some more: a bridge that gets half of it ends
// the process.
constexpr int descriptorsOfHelper = 16;

using Clock = std::chrono::steady_clock;

}  // namespace

HelperSession::HelperSession(std::uint64_t frameBytes, Reporter& reporter)
    : reporter(reporter), stall(Clock::now()), folder(frameBytes + answerBytes) {
    sweepStaleObjects();
    watch.emplace([this](const auto& end) { helperDied(end); }, [this] { look(); });
}

HelperSession::~HelperSession() {
    expectEnd();
}

HelperKeeper::Helper HelperSession::start(const std::function<void()>& startHelper) {
    if (!Morvane::Platform::hasRoomForDescriptors(descriptorsOfHelper)) {
        throw Failure(
            Exit::HelperFailed,
            fmt::format("the QuickTime helper can't be started: a limit (ulimit -n) leaves less than {} "
                        "more files to be opened",
                        descriptorsOfHelper));
    }
    Started& helper = addHelper();
    try {
        const Interrupts::HeldBack heldBack;
        helper.output.capture(startHelper);
        const std::lock_guard lock(mutex);
        return helpers.size() - 1;
    } catch (const std::exception& error) {
        if (getpid() != process) {
            _exit(127);
        }
        expectEnd();
        hearLastWords();
        throw Failure(Exit::HelperFailed,
                      fmt::format("the QuickTime helper can't be started: {}", error.what()));
    }
}

HelperSession::Started& HelperSession::addHelper() {
    const std::lock_guard lock(mutex);
    return helpers.emplace_back([this](const std::string& line) { reporter.helperLine(line); });
}

void HelperSession::hearLastWords() {
    const std::lock_guard lock(mutex);
    for (Started& helper : helpers) {
        helper.output.drain(lastWords);
    }
}

void HelperSession::setActivity(const std::string& newActivity) {
    const std::lock_guard lock(mutex);
    activity = newActivity;
    helperAwaited = true;
    stall.progress(Clock::now());
}

void HelperSession::setOwnActivity(Helper helper, const std::string& newActivity) {
    const std::lock_guard lock(mutex);
    std::next(helpers.begin(), static_cast<std::ptrdiff_t>(helper))->ownActivity = newActivity;
}

/// A helper's death closes its standard error, which tells it from the others.
void HelperSession::nameActivityOfDead() {
    const std::lock_guard lock(mutex);
    const auto dead = std::find_if(helpers.begin(), helpers.end(),
                                   [](Started& helper) { return helper.output.hasEnded(); });
    if (dead != helpers.end() && !dead->ownActivity.empty()) {
        activity = dead->ownActivity;
    }
}

void HelperSession::setIdle(const std::string& newActivity) {
    const std::lock_guard lock(mutex);
    activity = newActivity;
    helperAwaited = false;
    stall.progress(Clock::now());
}

void HelperSession::signOfLife() {
    const std::lock_guard lock(mutex);
    stall.progress(Clock::now());
}

void HelperSession::setTimeout(std::optional<std::chrono::seconds> timeout) {
    const std::lock_guard lock(mutex);
    stall.setTimeout(timeout);
}

void HelperSession::expectEnd() {
    watch->expectEnd();
    const std::lock_guard lock(mutex);
    endDue = Clock::now() + graceAtEnd;
}

void HelperSession::setPartialFile(const std::string& path) {
    const std::lock_guard lock(mutex);
    partialFile = path;
}

void HelperSession::helperDied(const Morvane::Platform::ProcessEnd& end) {
    hearLastWords();
    nameActivityOfDead();
    const std::string how = fmt::format("{} {}", end.signalled ? "signal" : "exit code", end.number);
    abandon(Exit::HelperFailed, fmt::format("the QuickTime helper died ({})", how));
}

void HelperSession::look() {
    lookForGivingUp();
    lookForStall();
    lookForUnwillingHelper();
}

void HelperSession::lookForGivingUp() {
    std::unique_lock lock(mutex);
    const int needed = stall.reported() ? 2 : 3;
    lock.unlock();
    if (interrupts_.count() >= needed) {
        giveUp("given up");
    }
}

void HelperSession::lookForStall() {
    std::unique_lock lock(mutex);
    if (!helperAwaited || endDue) {
        return;
    }
    const auto now = Clock::now();
    const auto silence = stall.reportDue(now);
    const bool timedOut = stall.timedOut(now);
    const std::string doing = activity;
    lock.unlock();
    const std::string who = silence || timedOut ? helperProcessesText() : "";
    if (silence) {
        spdlog::warn("no progress for {} s while {}{}; Ctrl-C twice gives up", silence->count(), doing,
                     who.empty() ? "" : " (" + who + ")");
    }
    if (timedOut) {
        abandon(Exit::HelperFailed, fmt::format("the QuickTime helper has not answered in time ({})", who));
    }
}

void HelperSession::lookForUnwillingHelper() {
    std::unique_lock lock(mutex);
    if (!endDue) {
        return;
    }
    continueStoppedHelpers();
    if (Clock::now() >= *endDue) {
        endDue.reset();
        spdlog::warn("the QuickTime helper does not end; it is killed");
        killHelpers();
    }
}

void HelperSession::giveUp(const std::string& sentence) {
    abandon(Exit::Interrupted, sentence);
}

void HelperSession::abandon(Exit code, const std::string& sentence) {
    std::unique_lock lock(mutex);
    spdlog::error("{} while {}", sentence, activity);
    const std::string file = partialFile;
    lock.unlock();
    endHelpers(graceWhenGivenUp);
    const std::string partial = Morvane::FileSystem::exists(file) ? file : "";
    if (!partial.empty()) {
        spdlog::error("what there is of the movie is in {0}; corvel recover '{0}' makes it whole", partial);
    }
    for (const std::string& path : Morvane::Platform::openFilePaths()) {
        Morvane::QuickTime::removeSharedObjects(path);
    }
    folder.remove();
    reporter.end({.exit = static_cast<int>(code), .output = partial});
    _exit(static_cast<int>(code));
}

}  // namespace Corvel
