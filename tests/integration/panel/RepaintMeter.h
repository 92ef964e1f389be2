#pragma once

#include <QTimer>
#include <QWidget>
#include <chrono>
#include <map>
#include <string>

/// How long a window goes without a repaint, as far as that is the program's own doing: a timer repaints it
/// over and over, and the longest time between two repaints is kept, less the time in which threads of the
/// program were ready to run and the machine gave its processors to others (of all its threads: drawing has
/// helpers). So a busy machine does not decide. One thread.
class RepaintMeter {
public:
    static constexpr std::chrono::milliseconds interval{20};

    explicit RepaintMeter(QWidget& window);

    /// Forgets what was seen so far.
    void restart();

    std::chrono::nanoseconds longestGap() const { return longest; }
    /// The same with the time that others had the processors.
    std::chrono::nanoseconds longestSeen() const { return longestOnTheClock; }
    int repaints() const { return count; }

private:
    /// For a processor since the thread began, by thread.
    using Waits = std::map<std::string, std::chrono::nanoseconds>;
    struct Moment {
        std::chrono::steady_clock::time_point clock;
        Waits waits;
    };

    static Moment now();
    static std::chrono::nanoseconds waited(const Waits& before, const Waits& after);
    void beat();

    QWidget& painted;
    QTimer timer;
    Moment last;
    std::chrono::nanoseconds longest{0};
    std::chrono::nanoseconds longestOnTheClock{0};
    int count = 0;
};
