#pragma once

#include <csignal>
#include <vector>

namespace Corvel {

/// Counts the requests to stop: SIGINT (Ctrl-C), SIGTERM and SIGHUP (the terminal has gone). What a count
/// means is the caller's: the first lets the running frame end, the second gives it up, the third gives up
/// everything. A signal that was ignored when the program was started (nohup) stays ignored. One object at a
/// time.
class Interrupts {
public:
    /// Begins to count, from 0.
    Interrupts();
    /// Gives the signals their former meaning.
    ~Interrupts();
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

    /// How many came so far. Any thread.
    int count() const;

    /// Holds SIGINT and SIGHUP back from the calling thread while it lives, and for good from any process
    /// that the thread starts meanwhile: the terminal sends Ctrl-C to the helper too, which must outlive it
    /// for the movie to be finished. What comes in that time is counted all the same, at the latest
    /// afterwards.
    class HeldBack {
    public:
        HeldBack();
        ~HeldBack();
        HeldBack(const HeldBack&) = delete;
        HeldBack& operator=(const HeldBack&) = delete;

    private:
        sigset_t former{};
    };

private:
    std::vector<struct sigaction> former;
};

}  // namespace Corvel
