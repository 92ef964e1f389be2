#include "host/app/SoundCheck.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <optional>

#include "host/app/KnobOptions.h"
#include "host/render/Failure.h"

namespace Corvel {
namespace {

/// The reading end of a pipe whose writing end becomes a child's standard error.
class Listener {
public:
    Listener() {
        if (pipe(ends.data()) != 0) {
            ends = {-1, -1};
        }
        for (const int end : ends) {
            fcntl(end, F_SETFD, FD_CLOEXEC);
        }
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    }
    ~Listener() {
        posix_spawn_file_actions_destroy(&actions);
        stopWriting();
        close(ends[0]);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    const posix_spawn_file_actions_t* forChild() const { return &actions; }

    /// All that the child says until it ends.
    std::string listen() {
        stopWriting();
        std::string text;
        std::array<char, 512> block{};
        ssize_t length = 0;
        while ((length = read(ends[0], block.data(), block.size())) > 0 || (length < 0 && errno == EINTR)) {
            text.append(block.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
        }
        return text;
    }

private:
    void stopWriting() {
        if (ends[1] >= 0) {
            close(ends[1]);
            ends[1] = -1;
        }
    }

    std::array<int, 2> ends{-1, -1};
    posix_spawn_file_actions_t actions{};
};

/// "corvel-movie: the reason (-50)" without program and code.
std::string reasonIn(const std::string& line) {
    const std::size_t begin = line.find(": ");
    const std::size_t end = line.rfind(" (");
    return begin == std::string::npos || end == std::string::npos || end < begin + 2
               ? "it holds no sound that can be read"
               : line.substr(begin + 2, end - begin - 2);
}

/// Why the tool refuses the file; nothing where it takes it or cannot be asked.
std::optional<std::string> refusal(const std::string& movieTool, const std::string& path) {
    const std::string file = std::filesystem::absolute(path).string();
    const std::array<const char*, 4> arguments = {movieTool.c_str(), "sound", file.c_str(), nullptr};
    Listener listener;
    pid_t child = 0;
    if (posix_spawn(&child, movieTool.c_str(), listener.forChild(), nullptr,
                    const_cast<char* const*>(arguments.data()), environ) != 0) {
        return std::nullopt;
    }
    const std::string said = listener.listen();
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    constexpr int refused = 1;
    return WIFEXITED(status) && WEXITSTATUS(status) == refused ? std::optional(reasonIn(said)) : std::nullopt;
}

}  // namespace

void checkSounds(const std::vector<KnobSetting>& settings, const std::string& movieTool) {
    for (const KnobSetting& setting : settings) {
        if (setting.knob != audioKnob || setting.text.empty()) {
            continue;
        }
        if (const auto reason = refusal(movieTool, setting.text)) {
            throw Failure(Exit::InputUnreadable,
                          fmt::format("cannot use the audio file {}: {}", setting.text, *reason));
        }
    }
}

}  // namespace Corvel
