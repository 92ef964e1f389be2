#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Morvane::ProcessBridge {

/// A child process and, if it was asked for, pipes to its standard input and output. Nothing is done when it
/// is destroyed: its owner stops the child and closes the pipes.
struct ChildProcess {
    std::int32_t pid = -1;
    std::int32_t stdoutRead = -1;
    std::int32_t stdoutWrite = -1;
    std::int32_t stdinRead = -1;
    std::int32_t stdinWrite = -1;

    /// Forks and executes `path` with `arguments` and this process's environment. A leading ".." of `path`
    /// becomes the host bundle's content folder; the last component of `path`, its "/" included, is put
    /// before `arguments` and a null pointer after them. Both are changed in place. Always 0.
    ///
    /// A child that cannot execute the program says so on standard error and deliberately comes back from
    /// this call like the parent, with `pid` -1; whoever may see that must compare `getpid()` and leave with
    /// `_exit`. Ends the process when pipes cannot be made (`abort`) or when it cannot fork (`exit(1)`).
    int launch(std::string& path, std::vector<const char*>& arguments, bool usePipes);

    /// Has not ended yet. Reaps the child if it has.
    bool isRunning() const;
    /// Blocks until the child has ended and reaps it; false when it had been reaped before.
    bool waitForExit() const;
    /// Sends SIGTERM; false with a message when there is no such process.
    bool terminate() const;

    /// Bytes read or written; 0 with a message when the child was launched without pipes.
    ssize_t readFromStdout(void* buffer, std::size_t length) const;
    ssize_t writeToStdin(const void* buffer, std::size_t length) const;
    /// The text and its terminating NUL.
    ssize_t writeToStdin(const std::string& text) const;

    /// Closes this side's ends. The fields keep their numbers, so it must be called once.
    void closePipes() const;
};

static_assert(sizeof(ChildProcess) == 20);

}  // namespace Morvane::ProcessBridge
