#include "host/panel/QuitSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <QApplication>
#include <cerrno>
#include <csignal>
#include <cstdio>

namespace Corvel::Panel {

namespace {

constexpr int stopSignals[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t writeEnd = -1;

void tellPipe(int) {
    const int error = errno;
    [[maybe_unused]] const auto written = write(writeEnd, "q", 1);
    errno = error;
}

}  // namespace

QuitSignals::QuitSignals() {
    int ends[2];
    if (pipe(ends) != 0) {
        std::perror("corvel: signals end the panel at once");
        return;
    }
    for (const int end : ends) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
    }
    writeEnd = ends[1];
    notifier = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, [this] {
        notifier->setEnabled(false);
        QApplication::quit();
    });
    struct sigaction action {};
    action.sa_handler = tellPipe;
    action.sa_flags = SA_RESTART | SA_RESETHAND;
    for (const int signal : stopSignals) {
        struct sigaction former {};
        sigaction(signal, nullptr, &former);
        if (former.sa_handler != SIG_IGN) {
            sigaction(signal, &action, nullptr);
        }
    }
}

// The pipe stays open: a signal may still come.
QuitSignals::~QuitSignals() = default;

}  // namespace Corvel::Panel
