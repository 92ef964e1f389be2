#include "worker/app/ModeTable.h"

#include "worker/output/VideoOutputMode.h"
#include "worker/read/ReadMode.h"
#include "worker/write/WriteMode.h"

namespace Morvane::Worker {

namespace {

struct Entry {
    const char* word;
    std::unique_ptr<Mode> (*make)();
    bool confined;
};

constexpr Entry modes[] = {
    {"write", []() -> std::unique_ptr<Mode> { return std::make_unique<WriteMode>(); }, false},
    {"read", []() -> std::unique_ptr<Mode> { return std::make_unique<ReadMode>(); }, true},
    {"videooutput", []() -> std::unique_ptr<Mode> { return std::make_unique<VideoOutputMode>(); }, false},
};

}  // namespace

std::unique_ptr<Mode> makeMode(const std::string& word) {
    for (const Entry& mode : modes)
        if (word == mode.word)
            return mode.make();
    return nullptr;
}

bool isConfinedMode(const std::string& word) {
    for (const Entry& mode : modes)
        if (word == mode.word)
            return mode.confined;
    return false;
}

std::string modeWords() {
    std::string words;
    for (const Entry& mode : modes)
        words += (words.empty() ? "" : "|") + std::string(mode.word);
    return words;
}

}  // namespace Morvane::Worker
