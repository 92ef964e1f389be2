#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace Corvel {

/// What a program left behind.
struct Finished {
    int exit = 0;  ///< 128 and the signal's number where a signal ended it
    std::string output;
    std::string errors;  ///< its standard error
};

/// Runs a program to its end; it is looked for in PATH, reads nothing, and holds no interrupt back that the
/// terminal sends. Throws Failure (HelperFailed) when it cannot be started.
Finished runProgram(const std::vector<std::string>& words);

/// Starts a program in a process group of its own, so that the terminal's interrupts are left to this
/// process to pass on. `errors` is the descriptor of its standard error, and of its output. Throws as above.
pid_t startProgram(const std::vector<std::string>& words, int errors);

/// An exit code from what waitpid gave.
int exitOf(int status);

}  // namespace Corvel
