#pragma once

#include <string>
#include <vector>

namespace Morvane::Tests {

/// What became of the program `movie_writer`.
struct WriterEnd {
    bool killed = false;
    int exitCode = -1;
    std::string told;  ///< see the program

    int packets() const;       ///< taken by the movie file
    bool finished() const;     ///< the movie file said that it is whole
    bool callReached() const;  ///< the call at which a fault was planned was made
};

/// Runs movie_writer with these arguments and waits for its end. What it says on standard error is dropped.
WriterEnd runWriter(const std::vector<std::string>& arguments);

/// The same, but kills it after so many milliseconds; `packetsASecondBefore` is how many packets it had
/// handed over one second before that.
WriterEnd runAndKillWriter(const std::vector<std::string>& arguments, int milliseconds,
                           int& packetsASecondBefore);

}  // namespace Morvane::Tests
