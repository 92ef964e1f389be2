#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace Corvel {

/// What the helper writes to standard error, line by line, so that it goes through the reporter like
/// everything else: a progress bar stays whole, and machine-readable progress stays readable.
///
/// The helper inherits the host's standard error. So while it is started, the host's standard error is the
/// writing end of a pipe; the reading end is read by a thread of this object's until the helper closes its
/// own end by ending.
class HelperOutput {
public:
    /// `line` is called for each line, without its line break, on this object's thread.
    explicit HelperOutput(std::function<void(const std::string&)> line);
    /// Hands on what is there and stops, also where a process that the helper left behind keeps its end open.
    ~HelperOutput();
    HelperOutput(const HelperOutput&) = delete;
    HelperOutput& operator=(const HelperOutput&) = delete;

    /// Calls `startHelper` with the pipe as standard error. Once only. Should the process abort meanwhile,
    /// what has been written to the pipe is shown all the same. Throws what `startHelper` throws.
    void capture(const std::function<void()>& startHelper);

    /// Waits until the helper has closed its end and everything is handed on, at most for `patience`.
    void drain(std::chrono::milliseconds patience);

    /// Whether the helper has closed its end: it has ended.
    bool hasEnded();

private:
    void readLines();
    bool readSome();

    const std::function<void(const std::string&)> line;
    int readEnd = -1;
    int writeEnd = -1;
    int stopRead = -1;  // reads as ended once stopWrite is closed
    int stopWrite = -1;
    std::string unfinished;
    std::mutex mutex;
    std::condition_variable changed;
    bool ended = false;
    std::thread thread;
};

}  // namespace Corvel
