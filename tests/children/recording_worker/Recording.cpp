#include "tests/children/recording_worker/Recording.h"

#include <gtest/gtest.h>
#include <semaphore.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "processbridge/ResourceNames.h"

namespace Morvane::Testing {

namespace {

using Path = std::filesystem::path;

Path folderOfTest() {
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(test->test_suite_name()) + "." + test->name();
    for (char& character : name) {
        character = character == '/' ? '_' : character;
    }
    return Path(CORVEL_SCRATCH_FOLDER) / name;
}

std::string readBytes(const Path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<std::string> readTexts(const Path& file) {
    std::istringstream stream(readBytes(file));
    std::vector<std::string> texts;
    for (std::string text; std::getline(stream, text, '\0');) {
        texts.push_back(text);
    }
    return texts;
}

/// The C-string form that the semaphore class gives to a name.
std::string cut(const std::string& name) {
    return name.substr(0, 30);
}

}  // namespace

Recording::Recording() : folder(folderOfTest()) {
    removeTraces();
    for (const char* inner : {"payloads", "script", "shared"}) {
        create_directories(folder / inner);
    }
    setenv("CORVEL_TEST_RECORDING", folder.c_str(), 1);
    setenv("CORVEL_TEMP_DIR", (folder / "shared").c_str(), 1);
}

Recording::~Recording() {
    unsetenv("CORVEL_TEST_RECORDING");
    unsetenv("CORVEL_TEMP_DIR");
    removeTraces();
}

void Recording::removeTraces() const {
    const std::vector<std::string> texts = arguments();
    if (texts.size() > 1) {
        const ProcessBridge::ResourceNames names(texts[1]);
        sem_unlink(cut(names.readySemaphore).c_str());
        sem_unlink(cut(names.doneSemaphore).c_str());
    }
    remove_all(folder);
}

void Recording::script(const std::string& head, int turn, const std::string& entry) const {
    const std::string name = turn == 0 ? head : head + "." + std::to_string(turn);
    std::ofstream(folder / "script" / name, std::ios::binary) << entry;
}

void Recording::answer(const std::string& head, const std::string& text, int turn) const {
    script(head, turn, "answer " + text + '\0');
}

void Recording::answerBytes(const std::string& head, const std::string& bytes, int turn) const {
    script(head, turn, "answer " + bytes);
}

void Recording::hold(const std::string& head, int turn) const {
    script(head, turn, "hold");
}

void Recording::die(const std::string& head, int turn) const {
    script(head, turn, "die");
}

std::vector<std::string> Recording::requests() const {
    return readTexts(folder / "requests");
}

std::string Recording::payload(std::size_t index) const {
    return readBytes(folder / "payloads" / std::to_string(index + 1));
}

std::string Recording::payloadText(std::size_t index) const {
    return payload(index).c_str();
}

std::vector<std::string> Recording::arguments() const {
    return readTexts(folder / "arguments");
}

std::vector<std::string> Recording::environment() const {
    return readTexts(folder / "environment");
}

void Recording::waitForRequests(std::size_t count) const {
    while (requests().size() < count) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

std::vector<std::string> Recording::leftovers() const {
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(folder / "shared" / "processbridge")) {
        names.push_back(file.path().filename().string());
    }
    const ProcessBridge::ResourceNames bridge(arguments().at(1));
    for (const std::string& name : {cut(bridge.readySemaphore), cut(bridge.doneSemaphore)}) {
        sem_t* semaphore = sem_open(name.c_str(), 0);
        if (semaphore != SEM_FAILED) {
            sem_close(semaphore);
            names.push_back(name);
        }
    }
    return names;
}

}  // namespace Morvane::Testing
