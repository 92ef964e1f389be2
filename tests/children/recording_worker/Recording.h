#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace Morvane::Testing {

/// What one recording worker is to answer and what it was asked. While the object lives, workers started by
/// this process record into its folder and the bridge's shared files lie there; one worker at a time. The
/// folder belongs to the running test; what an earlier, killed run left in it goes first.
///
/// In the folder:
///   arguments, environment  what the worker was started with, each text followed by a NUL
///   requests                every request text in order, each followed by a NUL
///   payloads/1, 2, …        the whole data file as it was when that request came
///   script/HEAD.N, HEAD     what to do with the Nth request of that head, or with any: "answer BYTES",
///   "hold"
///                           (never answer) or "die" (by SIGKILL, unanswered). Without one the answer is "0".
///   shared/processbridge    the bridge's shared files (CORVEL_TEMP_DIR is "shared")
class Recording {
public:
    Recording();
    /// Removes the folder and unsets what it has set in the environment.
    ~Recording();

    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    /// A head is a request's first nine characters ("W0000000e"); `turn` counts the requests of that head
    /// from 1, and 0 stands for all that have no answer of their own.
    void answer(const std::string& head, const std::string& text, int turn = 0) const;
    /// The same without a NUL after the bytes.
    void answerBytes(const std::string& head, const std::string& bytes, int turn = 0) const;
    void hold(const std::string& head, int turn = 0) const;
    void die(const std::string& head, int turn = 0) const;

    /// Complete for every request that has been answered.
    std::vector<std::string> requests() const;
    /// The data file as request `index` (from 0) found it; at least the bytes that were sent with it.
    std::string payload(std::size_t index) const;
    /// The text that was sent with request `index`.
    std::string payloadText(std::size_t index) const;

    std::vector<std::string> arguments() const;
    std::vector<std::string> environment() const;

    /// Waits until `count` requests have been recorded.
    void waitForRequests(std::size_t count) const;

    /// Names of the bridge's files and semaphores that exist. Needs a worker that has answered a request.
    std::vector<std::string> leftovers() const;

    const std::filesystem::path folder;

private:
    void script(const std::string& head, int turn, const std::string& entry) const;
    void removeTraces() const;
};

}  // namespace Morvane::Testing
