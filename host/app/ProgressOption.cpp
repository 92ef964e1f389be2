#include "host/app/ProgressOption.h"

#include <map>

#include "host/render/Log.h"

namespace Corvel {

void declareProgressOption(CLI::App& app, std::optional<ProgressStyle>& progress, const std::string& group) {
    const std::map<std::string, ProgressStyle> styles{{"bar", ProgressStyle::Bar},
                                                      {"plain", ProgressStyle::Plain},
                                                      {"json", ProgressStyle::Json},
                                                      {"none", ProgressStyle::None}};
    CLI::Option* const option =
        app.add_option("--progress", progress,
                       "How to show progress on standard error: bar, plain, json or none (default: bar on a "
                       "terminal, else "
                       "plain)")
            ->transform(CLI::CheckedTransformer(styles, CLI::ignore_case).description(""))
            ->type_name("STYLE");
    if (!group.empty()) {
        option->group(group);
    }
}

void useProgress(Session& session, const std::optional<ProgressStyle>& progress) {
    const ProgressStyle standard = session.console.isTerminal() ? ProgressStyle::Bar : ProgressStyle::Plain;
    session.reporter = createReporter(progress.value_or(standard), session.console);
    logTo(session.reporter.get());
}

}  // namespace Corvel
