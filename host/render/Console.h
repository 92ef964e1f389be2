#pragma once

#include <mutex>
#include <string>

namespace Corvel {

/// Standard error as lines of text with, on a terminal, one status line below them that changes in place. Any
/// thread; every line is one write, so that lines of several processes on one terminal stay whole.
class Console {
public:
    /// Writes to `descriptor`, which stays the caller's.
    explicit Console(int descriptor);
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    bool isTerminal() const { return terminal; }
    /// Width of the terminal in characters, 80 where it is not known.
    int columns() const;

    /// Writes a line above the status line. A line break is added.
    void line(const std::string& text);
    /// Replaces the status line; the empty text removes it. Only for a terminal.
    void status(const std::string& text);

private:
    void write(const std::string& bytes) const;

    const int descriptor;
    const bool terminal;
    std::mutex mutex;
    std::string shownStatus;
};

}  // namespace Corvel
