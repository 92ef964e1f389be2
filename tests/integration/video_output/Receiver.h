#pragma once

#include <string>
#include <vector>

#include "Program.h"

namespace Morvane::Testing {

/// A port of this machine that nobody listens on.
int freePort();

/// What a program of ffmpeg's receives on that port; it ends when nothing has come for three seconds.
std::string receiverUrl(int port);

/// A program that listens on a port of this machine.
class Receiver {
public:
    /// Starts it and waits until it listens.
    Receiver(const std::vector<std::string>& arguments, int port);

    /// All that it writes until its end.
    std::string output() { return program.output(); }

private:
    Program program;
};

}  // namespace Morvane::Testing
