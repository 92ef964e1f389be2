#pragma once

#include <stdexcept>
#include <string>

namespace Corvel {

/// The exit codes of `corvel`, as its help lists them.
enum class Exit : int {
    Done = 0,
    NodeFailed = 1,       ///< the node reported an error; the movie is not whole
    Usage = 2,            ///< the command line can't be carried out as it stands
    InputUnreadable = 3,  ///< input missing or unreadable
    HelperFailed = 4,     ///< the QuickTime helper is missing or died
    Interrupted = 130,
};

/// What ends a command early. `what()` is one sentence for a person.
class Failure : public std::runtime_error {
public:
    Failure(Exit code, const std::string& sentence) : std::runtime_error(sentence), code(code) {}

    const Exit code;
};

}  // namespace Corvel
