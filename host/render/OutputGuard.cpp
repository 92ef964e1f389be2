#include "host/render/OutputGuard.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

#include "filesystem/FileSystem.h"
#include "host/render/Failure.h"

namespace Corvel {
namespace {

namespace fs = std::filesystem;

bool isThere(const std::string& path) {
    struct stat state {};
    return lstat(path.c_str(), &state) == 0;
}

void move(const std::string& from, const std::string& to) {
    if (std::rename(from.c_str(), to.c_str()) != 0) {
        throw Failure(Exit::NodeFailed,
                      fmt::format("cannot move {} to {}: {}", from, to, std::strerror(errno)));
    }
}

std::string freeName(const std::string& path, const char* mark, bool hidden) {
    const fs::path whole(path);
    for (int number = 1;; ++number) {
        const std::string count = number == 1 ? "" : fmt::format("-{}", number);
        const std::string name = fmt::format("{}{}.{}{}{}", hidden ? "." : "", whole.stem().string(), mark,
                                             count, whole.extension().string());
        const std::string candidate = (whole.parent_path() / name).string();
        if (!isThere(candidate)) {
            return candidate;
        }
    }
}

}  // namespace

OutputGuard::OutputGuard(std::string output, bool replace) : output(std::move(output)), replace(replace) {}

OutputGuard::~OutputGuard() {
    try {
        settle(false);
    } catch (const Failure& failure) {
        spdlog::error("the former {} is in {} now: {}", output, aside, failure.what());
    }
}

void OutputGuard::setAside() {
    if (!isThere(output)) {
        return;
    }
    const std::string kept = freeName(output, "before", true);
    // A second name leaves the first one in place, so that the output is never absent; not every file system
    // has it.
    if (link(output.c_str(), kept.c_str()) != 0) {
        move(output, kept);
    }
    aside = kept;
}

std::string OutputGuard::moveBeside() const {
    if (!isThere(output)) {
        return "";
    }
    const std::string partial = freeName(output, "partial", false);
    move(output, partial);
    return partial;
}

std::string OutputGuard::settle(bool whole) {
    if (aside.empty()) {
        return isThere(output) ? output : "";
    }
    struct stat old {};
    struct stat now {};
    const bool unchanged = lstat(aside.c_str(), &old) == 0 && lstat(output.c_str(), &now) == 0 &&
                           old.st_ino == now.st_ino && old.st_dev == now.st_dev;
    if (whole && replace && !unchanged) {
        Morvane::FileSystem::remove(std::exchange(aside, ""));
        return output;
    }
    const std::string partial = unchanged ? "" : moveBeside();
    move(aside, output);
    // Two names of one file: the move does nothing and leaves both.
    Morvane::FileSystem::remove(std::exchange(aside, ""));
    if (whole && !replace) {
        throw Failure(Exit::NodeFailed,
                      fmt::format("{} has appeared meanwhile and may not be replaced; the movie is in {}",
                                  output, partial));
    }
    return partial;
}

}  // namespace Corvel
