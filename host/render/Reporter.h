#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "host/render/Console.h"
#include "host/render/ProgressText.h"

namespace Corvel {

enum class ProgressStyle { Bar, Plain, Json, None };

enum class MessageLevel { Info, Warning, Error };

struct RenderStart {
    int frames = 0;
    int width = 0;
    int height = 0;
    std::string output;
};

struct RenderEnd {
    int exit = 0;
    std::string output;  ///< the file that was written; empty when there is none
    int frames = 0;
    std::uint64_t bytes = 0;
    double seconds = 0;
};

/// What a person or a program sees of a run on standard error: messages in one style ("corvel: …"), and how
/// far a render is. Any thread may call any operation. The order is: messages at any time; `start`,
/// `progress`, `end` once each but for `progress`.
class Reporter {
public:
    virtual ~Reporter() = default;

    virtual void message(MessageLevel level, const std::string& text) = 0;
    /// A line that the QuickTime helper wrote; it carries the helper's own name.
    virtual void helperLine(const std::string& text) = 0;

    virtual void start(const RenderStart& start) = 0;
    /// A frame is done (`frameDone`), or a part of one.
    virtual void progress(const FrameProgress& progress, bool frameDone) = 0;
    virtual void end(const RenderEnd& end) = 0;
};

/// A reporter that writes to `console`, which must outlive it. Bar: messages, and a bar below them. Plain:
/// messages, and a line about progress each second. Json: one object a line, messages included, and nothing
/// else. None: messages only.
std::unique_ptr<Reporter> createReporter(ProgressStyle style, Console& console);

/// Lets something happen at most once in a period.
class Pace {
public:
    explicit Pace(std::chrono::milliseconds period) : period(period) {}

    /// Whether it may happen now; the first time it always may.
    bool due(std::chrono::steady_clock::time_point now) {
        if (begun && now - last < period) {
            return false;
        }
        begun = true;
        last = now;
        return true;
    }

private:
    const std::chrono::milliseconds period;
    bool begun = false;
    std::chrono::steady_clock::time_point last;
};

}  // namespace Corvel
