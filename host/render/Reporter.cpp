#include "host/render/Reporter.h"

#include <fmt/format.h>

#include <cmath>
#include <mutex>
#include <nlohmann/json.hpp>

namespace Corvel {
namespace {

using Clock = std::chrono::steady_clock;
using Json = nlohmann::ordered_json;

/// Messages as lines; nothing about progress.
class MessageReporter : public Reporter {
public:
    explicit MessageReporter(Console& console) : console(console) {}

    void message(MessageLevel level, const std::string& text) override {
        console.line(fmt::format("corvel: {}{}", level == MessageLevel::Warning ? "warning: " : "", text));
    }
    void helperLine(const std::string& text) override { console.line(text); }
    void start(const RenderStart&) override {}
    void progress(const FrameProgress&, bool) override {}
    void end(const RenderEnd&) override {}

protected:
    void tellEnd(const RenderEnd& end) {
        if (end.output.empty()) {
            return;
        }
        message(MessageLevel::Info,
                fmt::format("wrote {}: {} frame{}, {} in {:.1f} s ({:.1f} frames/s)", end.output, end.frames,
                            end.frames == 1 ? "" : "s", sizeText(end.bytes), end.seconds,
                            end.seconds > 0 ? end.frames / end.seconds : 0.0));
    }

    Console& console;
};

class PlainReporter : public MessageReporter {
public:
    using MessageReporter::MessageReporter;

    void start(const RenderStart& start) override {
        message(MessageLevel::Info,
                fmt::format("writing {} frame{} of {} x {} pixels to {}", start.frames,
                            start.frames == 1 ? "" : "s", start.width, start.height, start.output));
    }
    void progress(const FrameProgress& progress, bool frameDone) override {
        const std::lock_guard lock(mutex);
        if (frameDone && (progress.done == progress.total || pace.due(Clock::now()))) {
            message(MessageLevel::Info, plainText(progress));
        }
    }
    void end(const RenderEnd& end) override { tellEnd(end); }

private:
    std::mutex mutex;
    Pace pace{std::chrono::seconds(1)};
};

class BarReporter : public MessageReporter {
public:
    using MessageReporter::MessageReporter;
    ~BarReporter() override { console.status(""); }

    void progress(const FrameProgress& progress, bool frameDone) override {
        const std::lock_guard lock(mutex);
        const bool last = frameDone && progress.done == progress.total;
        if (last || pace.due(Clock::now())) {
            // One column less than there are: some terminals wrap at the last one.
            console.status(barText(progress, console.columns() - 1));
        }
    }
    void end(const RenderEnd& end) override {
        console.status("");
        tellEnd(end);
    }

private:
    std::mutex mutex;
    Pace pace{std::chrono::milliseconds(50)};
};

class JsonReporter : public Reporter {
public:
    explicit JsonReporter(Console& console) : console(console) {}

    void message(MessageLevel level, const std::string& text) override {
        const char* const name = level == MessageLevel::Error     ? "error"
                                 : level == MessageLevel::Warning ? "warning"
                                                                  : "info";
        write({{"event", "message"}, {"level", name}, {"source", "corvel"}, {"text", text}});
    }
    void helperLine(const std::string& text) override {
        write({{"event", "message"}, {"level", "error"}, {"source", "helper"}, {"text", text}});
    }
    void start(const RenderStart& start) override {
        write({{"event", "start"},
               {"total", start.frames},
               {"width", start.width},
               {"height", start.height},
               {"output", start.output}});
    }
    void progress(const FrameProgress& progress, bool frameDone) override {
        if (frameDone) {
            write({{"event", "frame"},
                   {"frame", progress.frame},
                   {"done", progress.done},
                   {"total", progress.total},
                   {"fps", rounded(progress.fps)},
                   {"bytes", progress.bytes},
                   {"seconds_left", rounded(progress.secondsLeft)}});
        }
    }
    void end(const RenderEnd& end) override {
        write({{"event", "end"},
               {"exit", end.exit},
               {"output", end.output.empty() ? Json() : Json(end.output)}});
    }

private:
    static Json rounded(const std::optional<double>& number) {
        return number ? Json(std::round(*number * 1000) / 1000) : Json();
    }
    // Bytes that are not UTF-8, as file names may have, are replaced: a line is valid JSON whatever happens.
    void write(const Json& object) {
        console.line(object.dump(-1, ' ', false, Json::error_handler_t::replace));
    }

    Console& console;
};

}  // namespace

std::unique_ptr<Reporter> createReporter(ProgressStyle style, Console& console) {
    switch (style) {
        case ProgressStyle::Bar:
            return std::make_unique<BarReporter>(console);
        case ProgressStyle::Plain:
            return std::make_unique<PlainReporter>(console);
        case ProgressStyle::Json:
            return std::make_unique<JsonReporter>(console);
        case ProgressStyle::None:
            break;
    }
    return std::make_unique<MessageReporter>(console);
}

}  // namespace Corvel
