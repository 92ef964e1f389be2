#include "WriterProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <stdexcept>

namespace Morvane::Tests {

namespace {

using Clock = std::chrono::steady_clock;

class Child {
public:
    explicit Child(const std::vector<std::string>& arguments) {
        std::vector<char*> argv = {const_cast<char*>(MOVIE_WRITER)};
        for (const std::string& argument : arguments) {
            argv.push_back(const_cast<char*>(argument.c_str()));
        }
        argv.push_back(nullptr);
        int ends[2] = {};
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        process = fork();
        if (process == 0) {
            dup2(ends[1], STDOUT_FILENO);
            dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
            execv(argv[0], argv.data());
            _exit(127);
        }
        close(ends[1]);
        output = ends[0];
    }
    ~Child() { close(output); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Collects what it tells until `until`, or its end.
    void listen(Clock::time_point until, std::string& told) const {
        while (true) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now()).count();
            pollfd ready = {output, POLLIN, 0};
            if (left <= 0 || poll(&ready, 1, static_cast<int>(std::min<long>(left, 1000))) < 0) {
                return;
            }
            if (ready.revents == 0) {
                continue;
            }
            char buffer[4096];
            const ssize_t count = read(output, buffer, sizeof buffer);
            if (count <= 0) {
                return;
            }
            told.append(buffer, static_cast<std::size_t>(count));
        }
    }

    void kill() const { ::kill(process, SIGKILL); }

    void wait(WriterEnd& end) const {
        int status = 0;
        waitpid(process, &status, 0);
        end.killed = WIFSIGNALED(status);
        end.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t process = -1;
    int output = -1;
};

}  // namespace

int WriterEnd::packets() const {
    return static_cast<int>(std::count(told.begin(), told.end(), 'p'));
}

bool WriterEnd::finished() const {
    return told.find('f') != std::string::npos;
}

bool WriterEnd::callReached() const {
    return told.find('e') == std::string::npos;
}

WriterEnd runWriter(const std::vector<std::string>& arguments) {
    WriterEnd end;
    const Child child(arguments);
    child.listen(Clock::time_point::max(), end.told);
    child.wait(end);
    return end;
}

WriterEnd runAndKillWriter(const std::vector<std::string>& arguments, int milliseconds,
                           int& packetsASecondBefore) {
    WriterEnd end;
    const Child child(arguments);
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
    child.listen(deadline - std::chrono::seconds(1), end.told);
    packetsASecondBefore = end.packets();
    child.listen(deadline, end.told);
    child.kill();
    child.listen(Clock::now() + std::chrono::seconds(1), end.told);
    child.wait(end);
    return end;
}

}  // namespace Morvane::Tests
