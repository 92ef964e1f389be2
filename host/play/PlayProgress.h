#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "host/render/Console.h"
#include "host/render/RateMeter.h"
#include "host/render/Reporter.h"

namespace Corvel {

/// How far playing is: on a terminal a line that changes in place, elsewhere a line each second. One thread.
class PlayProgress {
public:
    /// `total` frames are played; 0 when they are played again and again.
    PlayProgress(Console& console, int total);
    ~PlayProgress();
    PlayProgress(const PlayProgress&) = delete;
    PlayProgress& operator=(const PlayProgress&) = delete;

    /// One more frame is on its way to the screen.
    void sent(int frame);

    int frames() const { return done; }

private:
    std::string text(int frame) const;

    Console& console;
    const int total;
    int done = 0;
    std::optional<RateMeter> rate;  ///< from the first frame on
    Pace pace;
};

}  // namespace Corvel
