#include "host/render/Log.h"

#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <mutex>

namespace Corvel {
namespace {

class ReporterSink : public spdlog::sinks::base_sink<std::mutex> {
public:
    explicit ReporterSink(Reporter* reporter) : reporter(reporter) {}

protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        if (reporter == nullptr) {
            return;
        }
        const MessageLevel level = message.level >= spdlog::level::err    ? MessageLevel::Error
                                   : message.level == spdlog::level::warn ? MessageLevel::Warning
                                                                          : MessageLevel::Info;
        reporter->message(level, std::string(message.payload.data(), message.payload.size()));
    }
    void flush_() override {}

private:
    Reporter* const reporter;
};

}  // namespace

void logTo(Reporter* reporter) {
    spdlog::set_default_logger(
        std::make_shared<spdlog::logger>("corvel", std::make_shared<ReporterSink>(reporter)));
}

}  // namespace Corvel
