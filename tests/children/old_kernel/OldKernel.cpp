// Loaded into a program before everything else (LD_PRELOAD): process descriptors for who does not know them,
// as valgrind does not. A thread looks whether the process still lives; a pipe's end tells of its death.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdarg>
#include <fstream>
#include <string>
#include <thread>

namespace {

bool isAlive(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string entry;
    std::getline(file, entry);
    const std::size_t state = entry.rfind(") ");
    return state != std::string::npos && entry[state + 2] != 'Z' && entry[state + 2] != 'X';
}

long watch(pid_t process) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return -1;
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread([process, end = ends[1]] {
        while (isAlive(process))
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        close(end);
    }).detach();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return ends[0];
}

}  // namespace

extern "C" __attribute__((visibility("default"))) long syscall(long number, ...) noexcept {
    static const auto original = reinterpret_cast<long (*)(long, ...)>(dlsym(RTLD_NEXT, "syscall"));
    std::va_list list;
    va_start(list, number);
    long arguments[6];
    for (long& argument : arguments)
        argument = va_arg(list, long);
    va_end(list);
    if (number == SYS_pidfd_open)
        return watch(static_cast<pid_t>(arguments[0]));
    return original(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4],
                    arguments[5]);
}
