#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace Morvane::Testing {

/// What a program finds around it.
struct Surroundings {
    int extraDescriptor = -1;        ///< inherited under its own number; every other one above 2 is not
    std::string standardError = {};  ///< a file that what it writes there replaces; empty for the test's own
};

/// A program that a test runs beside itself. Its standard output is collected. One thread.
class Program {
public:
    /// Starts `arguments[0]`, found through PATH, with `arguments`.
    explicit Program(const std::vector<std::string>& arguments, const Surroundings& surroundings = {});

    /// Kills it if it still runs.
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t pid() const { return child; }

    /// Reads all that it writes and waits for its end.
    std::string allOutput();

    /// The same; fails the test where its exit code is not 0.
    std::string output();

    /// After its end: its exit code, or 128 and the signal that ended it.
    int exitCode() const { return code; }

    /// Sends `signal` and waits for its end.
    void end(int signal);

private:
    void wait();

    std::string name;
    pid_t child = -1;
    int readEnd = -1;
    int code = -1;
};

/// The processes that `parent`'s first thread has started and that are still there.
std::vector<pid_t> childrenOf(pid_t parent);

/// Whether PATH has a program `name`.
bool hasProgram(const std::string& name);

/// The output of a program that ends by itself.
std::string outputOf(const std::vector<std::string>& arguments);

}  // namespace Morvane::Testing
