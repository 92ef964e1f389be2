#include "host/farm/Program.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "host/render/Failure.h"

namespace Corvel {
namespace {

struct CloseFile {
    void operator()(FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, CloseFile>;

pid_t spawn(const std::vector<std::string>& words, int output, int errors, bool ownGroup) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, ownGroup ? POSIX_SPAWN_SETPGROUP : 0);
    pid_t child = 0;
    const int result =
        posix_spawnp(&child, words.front().c_str(), &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (result != 0) {
        throw Failure(Exit::HelperFailed,
                      fmt::format("cannot start {}: {}", words.front(), std::strerror(result)));
    }
    return child;
}

File temporaryFile() {
    File file(std::tmpfile());
    if (!file) {
        throw Failure(Exit::NodeFailed,
                      fmt::format("cannot make a temporary file: {}", std::strerror(errno)));
    }
    fcntl(fileno(file.get()), F_SETFD, FD_CLOEXEC);
    return file;
}

std::string contentsOf(const File& file) {
    std::string text;
    std::array<char, 4096> block{};
    std::rewind(file.get());
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), file.get())) {
        text.append(block.data(), count);
    }
    return text;
}

}  // namespace

Finished runProgram(const std::vector<std::string>& words) {
    const File output = temporaryFile();
    const File errors = temporaryFile();
    const pid_t child = spawn(words, fileno(output.get()), fileno(errors.get()), false);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return {exitOf(status), contentsOf(output), contentsOf(errors)};
}

pid_t startProgram(const std::vector<std::string>& words, int errors) {
    return spawn(words, errors, errors, true);
}

int exitOf(int status) {
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace Corvel
