#include "host/render/HelperSession.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <exception>

#include "filesystem/FileSystem.h"
#include "platform/OpenFiles.h"
#include "quicktime/SharedObjects.h"

namespace Corvel {
namespace {

// Room for the helper's longest answer besides a frame.
constexpr std::uint64_t answerBytes = 1 << 20;

// How long to wait for the last words of a helper that has died.
constexpr std::chrono::milliseconds lastWords(200);

}  // namespace

HelperSession::HelperSession(std::uint64_t frameBytes, Reporter& reporter)
    : reporter(reporter), folder(frameBytes + answerBytes) {
    watch.emplace([this](const auto& end) { helperDied(end); }, [this] { lookForGivingUp(); });
}

HelperSession::~HelperSession() {
    watch->expectEnd();
}

void HelperSession::start(const std::function<void()>& startHelper) {
    try {
        const Interrupts::Ignored ignored;
        addOutput().capture(startHelper);
    } catch (const std::exception& error) {
        if (getpid() != process) {
            _exit(127);
        }
        watch->expectEnd();
        hearLastWords();
        throw Failure(Exit::HelperFailed,
                      fmt::format("the QuickTime helper can't be started: {}", error.what()));
    }
}

HelperOutput& HelperSession::addOutput() {
    const std::lock_guard lock(mutex);
    return outputs.emplace_back([this](const std::string& line) { reporter.helperLine(line); });
}

void HelperSession::hearLastWords() {
    const std::lock_guard lock(mutex);
    for (HelperOutput& output : outputs) {
        output.drain(lastWords);
    }
}

void HelperSession::setActivity(const std::string& newActivity) {
    const std::lock_guard lock(mutex);
    activity = newActivity;
}

void HelperSession::setPartialFile(const std::string& path) {
    const std::lock_guard lock(mutex);
    partialFile = path;
}

void HelperSession::helperDied(const Morvane::Platform::ProcessEnd& end) {
    hearLastWords();
    const std::string how = fmt::format("{} {}", end.signalled ? "signal" : "exit code", end.number);
    abandon(Exit::HelperFailed, fmt::format("the QuickTime helper died ({})", how));
}

void HelperSession::lookForGivingUp() {
    if (interrupts_.count() > 2) {
        abandon(Exit::Interrupted, "given up");
    }
}

void HelperSession::abandon(Exit code, const std::string& sentence) {
    std::string partial;
    {
        const std::lock_guard lock(mutex);
        partial = Morvane::FileSystem::exists(partialFile) ? partialFile : "";
        spdlog::error("{} while {}", sentence, activity);
    }
    if (!partial.empty()) {
        spdlog::error("what there is of the movie is in {}", partial);
    }
    for (const std::string& path : Morvane::Platform::openFilePaths()) {
        Morvane::QuickTime::removeSharedObjects(path);
    }
    folder.remove();
    reporter.end({.exit = static_cast<int>(code), .output = partial});
    _exit(static_cast<int>(code));
}

}  // namespace Corvel
