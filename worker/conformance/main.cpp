#include <fmt/format.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "worker/conformance/Trial.h"

namespace {

using namespace Morvane::Worker;

constexpr int everythingHolds = 0;
constexpr int somethingFails = 1;
constexpr int usage = 2;

// A private folder for movies and shared files, removed with everything in it.
class WorkFolder {
public:
    WorkFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "corvel-conformance-XXXXXX").string();
        if (!mkdtemp(name.data())) {
            throw std::runtime_error(
                fmt::format("cannot make the folder {}: {}", name, std::strerror(errno)));
        }
        path = name;
        setenv("CORVEL_TEMP_DIR", path.c_str(), 1);
    }
    ~WorkFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    std::string path;
};

int tryAll(const std::string& worker) {
    const WorkFolder folder;
    int failed = 0;
    for (const Check& check : allChecks()) {
        const Outcome outcome = tryCheck(check, worker, {folder.path});
        failed += outcome.holds() ? 0 : 1;
        fmt::print("{:<12} {:<54} {}\n", check.mode, check.promise, outcome.holds() ? "holds" : "FAILS");
        if (!outcome.holds()) {
            fmt::print("{:<12}   {}\n", "", outcome.reason);
        }
        std::fflush(stdout);
    }
    fmt::print("{} of {} promises hold\n", allChecks().size() - static_cast<std::size_t>(failed),
               allChecks().size());
    return failed == 0 ? everythingHolds : somethingFails;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 || argv[1][0] == '-') {
        fmt::print(
            stderr,
            "usage: corvel-conformance WORKER\n\n"
            "Starts the program WORKER as the host would, in each of its modes, and prints which promises\n"
            "of the bridge's protocol it keeps. Exit status: 0 all hold, 1 some do not, 2 usage.\n");
        return usage;
    }
    signal(SIGPIPE, SIG_IGN);
    if (access(argv[1], X_OK) != 0 || std::filesystem::is_directory(argv[1])) {
        fmt::print(stderr, "corvel-conformance: {} is not a program that can be started\n", argv[1]);
        return usage;
    }
    try {
        return tryAll(std::filesystem::canonical(argv[1]).string());
    } catch (const std::exception& error) {
        fmt::print(stderr, "corvel-conformance: {}\n", error.what());
        return usage;
    }
}
