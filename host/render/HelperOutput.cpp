#include "host/render/HelperOutput.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace Corvel {
namespace {

void makePipe(int& readEnd, int& writeEnd) {
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    }
    readEnd = ends[0];
    writeEnd = ends[1];
    for (const int end : ends) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
    }
    fcntl(readEnd, F_SETFL, O_NONBLOCK);
}

// For the handler of SIGABRT, which can only reach what is global.
volatile sig_atomic_t abortSource = -1;
volatile sig_atomic_t abortTarget = -1;

// Only calls that a signal handler may make. Returning lets the process abort.
void showPipeOnAbort(int) {
    char bytes[4096];
    ssize_t count = 0;
    while ((count = read(abortSource, bytes, sizeof bytes)) > 0) {
        if (write(abortTarget, bytes, static_cast<std::size_t>(count)) < 0) {
            return;
        }
    }
}

// Standard error is another descriptor while this lives.
class StandardErrorReplaced {
public:
    StandardErrorReplaced(int replacement, int readEnd) : saved(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
        abortSource = readEnd;
        abortTarget = saved;
        dup2(replacement, STDERR_FILENO);
        formerHandler = std::signal(SIGABRT, showPipeOnAbort);
    }
    ~StandardErrorReplaced() {
        std::signal(SIGABRT, formerHandler);
        dup2(saved, STDERR_FILENO);
        close(saved);
    }
    StandardErrorReplaced(const StandardErrorReplaced&) = delete;
    StandardErrorReplaced& operator=(const StandardErrorReplaced&) = delete;

private:
    const int saved;
    void (*formerHandler)(int) = SIG_DFL;
};

}  // namespace

HelperOutput::HelperOutput(std::function<void(const std::string&)> line) : line(std::move(line)) {
    makePipe(readEnd, writeEnd);
    makePipe(stopRead, stopWrite);
    thread = std::thread([this] { readLines(); });
}

HelperOutput::~HelperOutput() {
    if (writeEnd != -1) {
        close(writeEnd);
    }
    close(stopWrite);
    thread.join();
    close(stopRead);
    close(readEnd);
}

void HelperOutput::capture(const std::function<void()>& startHelper) {
    {
        const StandardErrorReplaced replaced(writeEnd, readEnd);
        startHelper();
    }
    close(writeEnd);
    writeEnd = -1;
}

void HelperOutput::drain(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, patience, [this] { return ended; });
}

bool HelperOutput::hasEnded() {
    const std::lock_guard lock(mutex);
    return ended;
}

// False at the end of the pipe, or when there is nothing to read now.
bool HelperOutput::readSome() {
    std::array<char, 4096> bytes;
    const ssize_t count = read(readEnd, bytes.data(), bytes.size());
    if (count <= 0) {
        return count < 0 && errno == EINTR;
    }
    unfinished.append(bytes.data(), static_cast<std::size_t>(count));
    for (std::size_t end = unfinished.find('\n'); end != std::string::npos; end = unfinished.find('\n')) {
        line(unfinished.substr(0, end));
        unfinished.erase(0, end + 1);
    }
    return true;
}

void HelperOutput::readLines() {
    std::array<pollfd, 2> ends{{{readEnd, POLLIN, 0}, {stopRead, POLLIN, 0}}};
    bool open = true;
    while (open) {
        if (poll(ends.data(), ends.size(), -1) < 0 && errno != EINTR) {
            break;
        }
        const bool stopping = ends[1].revents != 0;
        open = ends[0].revents != 0 ? readSome() : !stopping;
    }
    if (!unfinished.empty()) {
        line(unfinished);
    }
    const std::lock_guard lock(mutex);
    ended = true;
    changed.notify_all();
}

}  // namespace Corvel
