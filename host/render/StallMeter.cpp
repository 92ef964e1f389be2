#include "host/render/StallMeter.h"

#include <algorithm>

namespace Corvel {
namespace {

constexpr std::chrono::seconds firstReport(10);
constexpr int mostDoublings = 20;

}  // namespace

void StallMeter::progress(Time now) {
    last = now;
    reports = 0;
}

std::optional<StallMeter::Seconds> StallMeter::reportDue(Time now) {
    const Seconds first = timeout ? std::clamp(*timeout / 2, Seconds(1), firstReport) : firstReport;
    if (silence(now) < first * (1 << std::min(reports, mostDoublings))) {
        return std::nullopt;
    }
    ++reports;
    return silence(now);
}

}  // namespace Corvel
