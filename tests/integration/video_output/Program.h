#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace Morvane::Testing {

/// A program that a test runs beside itself. Its standard output is collected, what it writes to standard
/// error goes with the test's. One thread.
class Program {
public:
    /// Starts `arguments[0]`, found through PATH, with `arguments`. `extraDescriptor` is inherited under its
    /// own number; every other one above 2 is not.
    explicit Program(const std::vector<std::string>& arguments, int extraDescriptor = -1);

    /// Kills it if it still runs.
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t pid() const { return child; }

    /// Reads all that it writes and waits for its end. Fails the test where its exit code is not 0.
    std::string output();

    /// Sends `signal` and waits for its end.
    void end(int signal);

private:
    std::string name;
    pid_t child = -1;
    int readEnd = -1;
};

/// Whether PATH has a program `name`.
bool hasProgram(const std::string& name);

/// The output of a program that ends by itself.
std::string outputOf(const std::vector<std::string>& arguments);

}  // namespace Morvane::Testing
