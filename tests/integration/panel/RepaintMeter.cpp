#include "tests/integration/panel/RepaintMeter.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>

RepaintMeter::RepaintMeter(QWidget& window) : painted(window), last(now()) {
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, [this] { beat(); });
    timer.start(interval);
}

void RepaintMeter::restart() {
    longest = longestOnTheClock = std::chrono::nanoseconds{0};
    count = 0;
    last = now();
}

RepaintMeter::Moment RepaintMeter::now() {
    Moment moment{std::chrono::steady_clock::now(), {}};
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream statistics(thread.path() / "schedstat");
        std::int64_t ran = 0;
        std::int64_t waited = 0;
        if (statistics >> ran >> waited) {  // a thread may just have ended
            moment.waits[thread.path().filename()] = std::chrono::nanoseconds(waited);
        }
    }
    if (moment.waits.empty()) {
        throw std::runtime_error("the system does not say how long threads wait for a processor");
    }
    return moment;
}

std::chrono::nanoseconds RepaintMeter::waited(const Waits& before, const Waits& after) {
    std::chrono::nanoseconds sum{0};
    for (const auto& [thread, wait] : after) {
        const auto former = before.find(thread);
        sum += wait - (former == before.end() ? std::chrono::nanoseconds{0} : former->second);
    }
    return sum;
}

void RepaintMeter::beat() {
    painted.repaint();
    const Moment current = now();
    const std::chrono::nanoseconds onTheClock = current.clock - last.clock;
    longestOnTheClock = std::max(longestOnTheClock, onTheClock);
    longest = std::max(longest, onTheClock - waited(last.waits, current.waits));
    last = current;
    ++count;
}
