#include "host/play/PlayProgress.h"

#include <fmt/format.h>

namespace Corvel {

using Clock = std::chrono::steady_clock;

PlayProgress::PlayProgress(Console& console, int total)
    : console(console), total(total), pace(std::chrono::milliseconds(console.isTerminal() ? 50 : 1000)) {}

PlayProgress::~PlayProgress() {
    if (console.isTerminal()) {
        console.status("");
    }
}

void PlayProgress::sent(int frame) {
    const auto now = Clock::now();
    ++done;
    if (rate) {
        rate->add(now);
    } else {
        rate.emplace(now);
    }
    if (!pace.due(now)) {
        return;
    }
    if (console.isTerminal()) {
        console.status(text(frame).substr(0, static_cast<std::size_t>(console.columns() - 1)));
    } else {
        console.line("corvel: " + text(frame));
    }
}

std::string PlayProgress::text(int frame) const {
    std::string line = fmt::format("frame {} ({}", frame, done);
    line += total > 0 ? fmt::format(" of {})", total) : ")";
    if (const auto fps = rate ? rate->framesPerSecond() : std::nullopt) {
        line += fmt::format(", {:.1f} frames/s", *fps);
    }
    return line;
}

}  // namespace Corvel
