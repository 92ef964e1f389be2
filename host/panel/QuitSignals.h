#pragma once

#include <QSocketNotifier>
#include <memory>

namespace Corvel::Panel {

/// Has the application close its windows and end, as if a person had closed them, when the process is asked
/// to stop: SIGINT, SIGTERM or SIGHUP. What was ignored when the program was started stays ignored; a second
/// signal of a kind ends the process at once. One object at a time, on the application's thread.
class QuitSignals {
public:
    QuitSignals();
    ~QuitSignals();
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;

private:
    std::unique_ptr<QSocketNotifier> notifier;  ///< of a pipe: a handler may do little more than write
};

}  // namespace Corvel::Panel
