#include "worker/FailureReport.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdint>

namespace Morvane::Worker {

namespace {

/// Texts of files and libraries go into the line: none of them may break it or steer a terminal.
std::string onOneLine(const std::string& text) {
    std::string line = text;
    for (char& character : line)
        if (static_cast<unsigned char>(character) < ' ' || character == '\x7f')
            character = ' ';
    while (!line.empty() && line.back() == ' ')
        line.pop_back();
    return line;
}

void writeLine(const std::string& text) {
    const std::string line = "CorvelQuickTimeHelper-32: " + text + "\n";
    // Nobody is left to be told when this fails.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace

void reportFailure(const std::string& reason, Status status) noexcept try {
    writeLine(fmt::format("{} ({})", onOneLine(reason), static_cast<std::int32_t>(status)));
} catch (...) {
    // Not enough memory for a line. The answer still carries the code.
}

void reportRemark(const std::string& remark) noexcept try { writeLine(onOneLine(remark)); } catch (...) {
    // As above; a remark may be lost.
}

}  // namespace Morvane::Worker
