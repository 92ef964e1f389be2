#include "platform/linux/Landlock.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace Morvane::Platform {

namespace {

// Of versions that the system's header may not know yet.
constexpr std::uint64_t truncateFile = 1u << 14;
constexpr std::uint64_t controlDevice = 1u << 15;
constexpr std::uint64_t bindAndConnect = 3;
constexpr std::uint64_t socketsAndSignalsInside = 3;

/// As the newest version that is used here has it; older ones read only its beginning.
struct Attributes {
    std::uint64_t files;
    std::uint64_t network;  // version 4
    std::uint64_t scopes;   // version 6
};

constexpr std::uint64_t readRights = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t fileRights =
    LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE | truncateFile;
constexpr std::uint64_t writeRights = readRights | LANDLOCK_ACCESS_FS_WRITE_FILE |
                                      LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_REMOVE_FILE |
                                      truncateFile;

std::uint64_t allFileRights(int version) {
    std::uint64_t rights = (1u << 13) - 1;
    if (version >= 2)
        rights |= 1u << 13;
    if (version >= 3)
        rights |= truncateFile;
    if (version >= 5)
        rights |= controlDevice;
    return rights;
}

[[noreturn]] void fail() {
    throw std::system_error(errno, std::generic_category(), "cannot restrict the files of this process");
}

void allow(int ruleset, const std::string& path, std::uint64_t rights) {
    const int descriptor = open(path.c_str(), O_PATH | O_CLOEXEC);
    if (descriptor == -1)
        return;
    struct stat state {};
    fstat(descriptor, &state);
    landlock_path_beneath_attr rule{};
    rule.allowed_access = S_ISDIR(state.st_mode) ? rights : rights & fileRights;
    rule.parent_fd = descriptor;
    const long result = syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    close(descriptor);
    if (result != 0)
        fail();
}

int makeRuleset(int version) {
    Attributes attributes{allFileRights(version), bindAndConnect, socketsAndSignalsInside};
    std::size_t size = sizeof attributes.files;
    if (version >= 4)
        size += sizeof attributes.network;
    if (version >= 6)
        size += sizeof attributes.scopes;
    const long ruleset = syscall(SYS_landlock_create_ruleset, &attributes, size, 0);
    if (ruleset == -1)
        fail();
    return static_cast<int>(ruleset);
}

}  // namespace

int landlockVersion() {
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return version > 0 ? static_cast<int>(version) : 0;
}

void restrictFiles(const Confinement& confinement) {
    const int version = landlockVersion();
    const std::uint64_t known = allFileRights(version);
    const int ruleset = makeRuleset(version);
    for (const std::string& path : confinement.readable)
        allow(ruleset, path, readRights);
    for (const std::string& path : confinement.writable)
        allow(ruleset, path, writeRights & known);
    for (const std::string& path : confinement.removable)
        allow(ruleset, path, LANDLOCK_ACCESS_FS_REMOVE_FILE);
    const long result = syscall(SYS_landlock_restrict_self, ruleset, 0);
    close(ruleset);
    if (result != 0)
        fail();
}

}  // namespace Morvane::Platform
