#include "filesystem/FileSystem.h"

#include <dlfcn.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>

namespace Morvane::FileSystem {

namespace {

bool hasType(const std::string& path, mode_t type) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && (status.st_mode & S_IFMT) == type;
}

/// Folders come after their contents, with a type of their own (FTW_DP), and so go through `remove`.
int removeEntry(const char* path, const struct stat*, int type, struct FTW*) {
    return type == FTW_D ? rmdir(path) : std::remove(path);
}

}  // namespace

bool exists(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0;
}

bool isDirectory(const std::string& path) {
    return hasType(path, S_IFDIR);
}

bool isRegularFile(const std::string& path) {
    return hasType(path, S_IFREG);
}

std::uint64_t fileSize(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

bool makeDirectory(const std::string& path, mode_t mode) {
    return mkdir(path.c_str(), mode) == 0;
}

bool changeDirectory(const std::string& path) {
    return chdir(path.c_str()) == 0;
}

bool changeMode(const std::string& path, mode_t mode) {
    return chmod(path.c_str(), mode) == 0;
}

bool makeReadableAndWritableByAll(const std::string& path) {
    return changeMode(path, 0666);
}

bool isReadable(const std::string& path) {
    return access(path.c_str(), R_OK) == 0;
}

bool isWritable(const std::string& path) {
    return access(path.c_str(), W_OK) == 0;
}

bool isReadableAndWritable(const std::string& path) {
    return access(path.c_str(), R_OK | W_OK) == 0;
}

bool remove(const std::string& path) {
    return std::remove(path.c_str()) == 0;
}

bool removeTree(const std::string& path) {
    constexpr int openDescriptors = 10240;
    return nftw(path.c_str(), removeEntry, openDescriptors, FTW_DEPTH | FTW_PHYS) == 0;
}

bool rename(const char* oldName, const char* newName) {
    return std::rename(oldName, newName) == 0;
}

std::string realPath(const std::string& path) {
    static char buffer[PATH_MAX];
    const char* resolved = realpath(path.c_str(), buffer);
    return resolved == nullptr ? std::string() : std::string(resolved);
}

std::string currentDirectory() {
    static char buffer[1024];
    const char* folder = getcwd(buffer, sizeof buffer);
    return folder == nullptr ? std::string() : std::string(folder);
}

std::string temporaryDirectory() {
    return "/var/tmp/";
}

void* openLibrary(const std::string& path) {
    return dlopen(path.c_str(), RTLD_NOW);
}

}  // namespace Morvane::FileSystem
