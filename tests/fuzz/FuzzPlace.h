#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>

#include "platform/Confinement.h"

/// There where a sanitizer is.
extern "C" void __sanitizer_symbolize_pc(void* place, const char* format, char* name, std::size_t size)
    __attribute__((weak));

namespace Morvane::Fuzz {

/// A folder for what a target writes, and no other file in reach: whatever path an input names, nothing of
/// the machine's is touched. What the fuzzer itself writes (CORVEL_FUZZ_CORPUS, else the working folder)
/// stays writable, and so does `alsoWritable`.
class FuzzPlace {
public:
    explicit FuzzPlace(const std::filesystem::path& alsoWritable = ".") {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_ / "processbridge");
        startSymbolizer();
        setenv("CORVEL_TEMP_DIR", folder_.c_str(), 1);
        const char* corpus = getenv("CORVEL_FUZZ_CORPUS");
        std::signal(SIGXFSZ, SIG_IGN);
        Platform::confine({.readable = {"/"},
                           .writable = {folder_, "/dev/shm", corpus == nullptr ? "." : corpus, alsoWritable},
                           .removable = {},
                           .memoryBytes = Platform::generousMemoryBytes(),
                           .fileBytes = std::uint64_t{256} << 20});
    }
    ~FuzzPlace() {
        // What is in it: the empty folder itself is out of reach by now.
        std::error_code error;
        std::filesystem::remove_all(folder_, error);
    }
    FuzzPlace(const FuzzPlace&) = delete;
    FuzzPlace& operator=(const FuzzPlace&) = delete;

    const std::filesystem::path& folder() const { return folder_; }

private:
    /// The program that names places in the code must run before no program can be started any more.
    static void startSymbolizer() {
        char name[256];
        if (&__sanitizer_symbolize_pc != nullptr)
            __sanitizer_symbolize_pc(reinterpret_cast<void*>(&startSymbolizer), "%f", name, sizeof name);
    }

    const std::filesystem::path folder_ = std::filesystem::temp_directory_path() / "corvel-fuzz";
};

}  // namespace Morvane::Fuzz
