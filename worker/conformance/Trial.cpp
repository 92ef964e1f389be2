#include "worker/conformance/Trial.h"

#include <fmt/format.h>
#include <poll.h>
#include <semaphore.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <optional>
#include <system_error>

#include "platform/ProcessWatch.h"
#include "processbridge/ResourceNames.h"
#include "processbridge/SharedMemoryFile.h"
#include "quicktime/BridgeName.h"

namespace Morvane::Worker {
namespace {

using Platform::ProcessWatch;

constexpr std::chrono::milliseconds patience{8000};
constexpr std::chrono::milliseconds oneLook{20};
constexpr std::chrono::milliseconds afterTheWorkersEnd{500};
constexpr std::chrono::milliseconds afterHostsDeath{1000};
constexpr std::size_t longestReason = 500;

// What the check's process tells: first that its worker runs, then how it went.
struct Report {
    pid_t worker;
    bool finished;
    char reason[longestReason + 1];
};

[[noreturn]] void runCheck(const Check& check, const std::string& bridgeName, const std::string& workerPath,
                           const CheckPlace& place, int reportEnd) {
    // The worker belongs to the same group, so that both can be killed together.
    setpgid(0, 0);
    const pid_t own = getpid();
    Report report{-1, false, {}};
    try {
        // Never destroyed: stopping a worker has its own check, and a worker that ignores SIGTERM must not
        // hang this one.
        auto* probe = new Probe(bridgeName, workerPath, check.mode);
        report.worker = probe->worker();
        (void)!write(reportEnd, &report, sizeof report);
        check.attempt(*probe, place);
    } catch (const std::exception& error) {
        // The child in which the worker cannot be executed comes here too.
        if (getpid() != own) {
            _exit(127);
        }
        std::strncpy(report.reason, error.what(), longestReason);
    }
    report.finished = true;
    (void)!write(reportEnd, &report, sizeof report);
    // Ends as a host does that crashes: without telling anybody.
    kill(own, SIGKILL);
    _exit(0);
}

// The next report, nothing when none comes within the time or the process has ended without one.
std::optional<Report> nextReport(int readEnd, std::chrono::milliseconds within) {
    pollfd waited{readEnd, POLLIN, 0};
    Report report{};
    if (poll(&waited, 1, static_cast<int>(within.count())) != 1 ||
        read(readEnd, &report, sizeof report) != sizeof report) {
        return std::nullopt;
    }
    return report;
}

// The report of a check under way. A worker that has died will not answer any more, but the check that killed
// it on purpose still has something to say.
std::optional<Report> finalReport(int readEnd, const ProcessWatch& worker) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (std::chrono::steady_clock::now() < deadline) {
        const bool dead = worker.isDead();
        if (const std::optional<Report> report = nextReport(readEnd, dead ? afterTheWorkersEnd : oneLook)) {
            return report;
        }
        if (dead) {
            break;
        }
    }
    return std::nullopt;
}

Outcome judge(const Check& check, int readEnd) {
    const std::optional<Report> started = nextReport(readEnd, patience);
    if (!started) {
        return {"the worker could not be started"};
    }
    if (started->finished) {
        return {started->reason};
    }
    std::optional<ProcessWatch> watch;
    try {
        watch.emplace(started->worker);
    } catch (const std::system_error&) {
        return {"the worker ended at once"};
    }
    const std::optional<Report> ended = finalReport(readEnd, *watch);
    if (!ended) {
        return {watch->isDead() ? "the worker ended without an answer"
                                : fmt::format("no answer within {} s", patience.count() / 1000)};
    }
    if (ended->reason[0] == '\0' && check.afterwards == Check::Afterwards::WorkerEnds &&
        watch->wait(afterHostsDeath) != ProcessWatch::Outcome::Died) {
        return {"the worker was alive one second after its host had been killed"};
    }
    return {ended->reason};
}

// The files go with the folder that they are in.
void sweepSemaphores(const std::string& bridgeName) {
    const ProcessBridge::ResourceNames names(bridgeName);
    sem_unlink(names.readySemaphore.substr(0, 30).c_str());
    sem_unlink(names.doneSemaphore.substr(0, 30).c_str());
}

}  // namespace

Outcome tryCheck(const Check& check, const std::string& workerPath, const CheckPlace& place) {
    const std::string bridgeName = QuickTime::makeBridgeName();
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    }
    const pid_t child = fork();
    if (child == -1) {
        throw std::system_error(errno, std::generic_category(), "cannot fork");
    }
    if (child == 0) {
        close(ends[0]);
        runCheck(check, bridgeName, workerPath, place, ends[1]);
    }
    // From both sides, since either may come first.
    setpgid(child, child);
    close(ends[1]);
    const Outcome outcome = judge(check, ends[0]);
    close(ends[0]);
    kill(-child, SIGKILL);
    waitpid(child, nullptr, 0);
    sweepSemaphores(bridgeName);
    return outcome;
}

}  // namespace Morvane::Worker
