#pragma once

#include <string>

namespace Corvel {

/// Looks after what already stands under the output's name while a new movie takes it. The old file stays
/// readable under its name until the new one is ready; it is kept aside while the new one is put in its
/// place, and put back if that one isn't whole. Nothing that was there is ever lost, and nothing new either:
/// a movie that isn't whole then stands beside the old one, under a name of its own.
class OutputGuard {
public:
    /// `output` is the movie's path; `replace` whether the user allows an existing file to be replaced.
    OutputGuard(std::string output, bool replace);
    /// Puts the old file back where `settle` was never reached.
    ~OutputGuard();
    OutputGuard(const OutputGuard&) = delete;
    OutputGuard& operator=(const OutputGuard&) = delete;

    /// Keeps the old file aside under a hidden name in the same folder. Call it when the new movie is about
    /// to take the output's name. Throws Failure (NodeFailed) when the system refuses.
    void setAside();

    /// Lets go of the old file when the new movie is `whole`, else puts it back. Call it when the movie has
    /// taken the output's name. Returns where the new movie is now: the output, or where that is the old file
    /// again, "NAME.partial.mov" or the first such name that is free; empty where there is no new movie.
    /// Throws Failure (NodeFailed) when the system refuses, or when a file has appeared meanwhile that may
    /// not be replaced.
    std::string settle(bool whole);

private:
    std::string moveBeside() const;

    const std::string output;
    const bool replace;
    std::string aside;  // empty while nothing is kept
};

}  // namespace Corvel
