#include "host/render/Interrupts.h"

#include <atomic>

namespace Corvel {
namespace {

using Signals = std::vector<int>;
const Signals stopSignals{SIGINT, SIGHUP, SIGTERM};

std::atomic<int> received{0};
static_assert(std::atomic<int>::is_always_lock_free, "the handler may take no lock");

void countSignal(int) {
    received.fetch_add(1);
}

// What the signals meant before. SA_RESTART: a system call on the way is no place to notice an interruption.
std::vector<struct sigaction> handle(const Signals& signals, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    std::vector<struct sigaction> former(signals.size());
    for (std::size_t i = 0; i < signals.size(); ++i) {
        sigaction(signals[i], nullptr, &former[i]);
        if (former[i].sa_handler != SIG_IGN) {
            sigaction(signals[i], &action, nullptr);
        }
    }
    return former;
}

void putBack(const Signals& signals, const std::vector<struct sigaction>& former) {
    for (std::size_t i = 0; i < signals.size(); ++i) {
        sigaction(signals[i], &former[i], nullptr);
    }
}

}  // namespace

Interrupts::Interrupts() {
    received = 0;
    former = handle(stopSignals, countSignal);
}

Interrupts::~Interrupts() {
    putBack(stopSignals, former);
}

int Interrupts::count() const {
    return received.load();
}

// Not SIGTERM: it is how the helper is told to end.
Interrupts::HeldBack::HeldBack() {
    sigset_t terminalSignals;
    sigemptyset(&terminalSignals);
    sigaddset(&terminalSignals, SIGINT);
    sigaddset(&terminalSignals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &terminalSignals, &former);
}

Interrupts::HeldBack::~HeldBack() {
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

}  // namespace Corvel
