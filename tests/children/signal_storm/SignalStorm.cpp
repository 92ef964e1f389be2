// Loaded into a program before everything else (LD_PRELOAD): from its start to its end the process gets a
// thousand signals a second, each of which interrupts a system call.

#include <signal.h>
#include <sys/time.h>

namespace {

void ignore(int) {}

struct Storm {
    Storm() {
        struct sigaction action {};
        // Deliberately without SA_RESTART.
        action.sa_handler = ignore;
        sigaction(SIGALRM, &action, nullptr);
        itimerval period{};
        period.it_interval.tv_usec = period.it_value.tv_usec = 1000;
        setitimer(ITIMER_REAL, &period, nullptr);
    }
};

const Storm storm;

}  // namespace
