#include "platform/linux/CallFilter.h"

#include <sched.h>
#include <seccomp.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>
#include <memory>
#include <system_error>

#include "platform/ResourceLimits.h"

namespace Morvane::Platform {

namespace {

// By name, since an older library or kernel lacks some; those are passed over.
constexpr std::initializer_list<const char*> refused = {
    // network
    "socket", "socketpair", "connect", "bind", "listen", "accept", "accept4", "sendto", "sendmsg", "sendmmsg",
    // other processes
    "process_vm_readv", "process_vm_writev", "process_madvise", "pidfd_getfd", "pidfd_send_signal", "kcmp",
    "tkill", "rt_sigqueueinfo", "rt_tgsigqueueinfo",
    // rights, owners and attributes of files
    "chmod", "fchmod", "fchmodat", "fchmodat2", "chown", "fchown", "lchown", "fchownat", "setxattr",
    "lsetxattr", "fsetxattr", "removexattr", "lremovexattr", "fremovexattr", "setxattrat", "removexattrat",
    "mknod", "mknodat", "open_by_handle_at", "name_to_handle_at",
    // rights of the process
    "setuid", "setgid", "setreuid", "setregid", "setresuid", "setresgid", "setfsuid", "setfsgid", "setgroups",
    "capset", "personality", "unshare", "setns", "chroot", "pivot_root",
    // the system
    "mount", "umount2", "fsopen", "fsmount", "move_mount", "open_tree", "mount_setattr", "swapon", "swapoff",
    "reboot", "kexec_load", "kexec_file_load", "init_module", "finit_module", "delete_module", "bpf",
    "perf_event_open", "userfaultfd", "add_key", "request_key", "keyctl", "iopl", "ioperm", "quotactl",
    "acct", "syslog", "settimeofday", "clock_settime", "adjtimex", "clock_adjtime", "sethostname",
    "setdomainname", "fanotify_init",
    // a second way to many calls, which filters do not see
    "io_uring_setup", "io_uring_enter", "io_uring_register"};

constexpr std::initializer_list<const char*> refusedUnlessSanitized = {"execve", "execveat", "fork", "vfork",
                                                                       "ptrace"};

struct FreeFilter {
    void operator()(void* filter) const { seccomp_release(filter); }
};

/// A condition on argument `number` of a call. The library's own macros for it are C alone.
scmp_arg_cmp argument(unsigned int number, scmp_compare comparison, scmp_datum_t first,
                      scmp_datum_t second = 0) {
    return {number, comparison, first, second};
}

class Filter {
public:
    Filter() : context(seccomp_init(SCMP_ACT_ALLOW)) {
        if (!context)
            throw std::bad_alloc();
    }

    template <typename... Conditions>
    void refuse(const char* call, int error, Conditions... conditions) {
        const int number = seccomp_syscall_resolve_name(call);
        if (number != __NR_SCMP_ERROR)
            check(seccomp_rule_add(context.get(), SCMP_ACT_ERRNO(static_cast<unsigned>(error)), number,
                                   sizeof...(conditions), conditions...),
                  true);
    }

    void load() { check(seccomp_load(context.get()), false); }

private:
    static void check(int result, bool mayBeUnknown) {
        // A call that this machine's kind does not have is refused as it is.
        if (result != 0 && !(mayBeUnknown && (result == -EDOM || result == -EINVAL)))
            throw std::system_error(-result, std::generic_category(), "cannot filter system calls");
    }

    std::unique_ptr<void, FreeFilter> context;
};

}  // namespace

void filterCalls() {
    Filter filter;
    for (const char* call : refused)
        filter.refuse(call, EPERM);
    if (!sanitized) {
        for (const char* call : refusedUnlessSanitized)
            filter.refuse(call, EPERM);
        // Threads share all with their maker. The newer call hides its flags from filters; the C library
        // falls back to the older one where there is none.
        filter.refuse("clone", EPERM, argument(0, SCMP_CMP_MASKED_EQ, CLONE_THREAD, 0));
        filter.refuse("clone3", ENOSYS);
    }
    const auto self = static_cast<scmp_datum_t>(getpid());
    filter.refuse("kill", EPERM, argument(0, SCMP_CMP_NE, self));
    filter.refuse("tgkill", EPERM, argument(0, SCMP_CMP_NE, self));
    constexpr scmp_datum_t typeIntoTerminal = 0x5412;  // TIOCSTI
    filter.refuse("ioctl", EPERM, argument(1, SCMP_CMP_EQ, typeIntoTerminal));
    filter.load();
}

}  // namespace Morvane::Platform
