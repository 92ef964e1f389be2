// A worker that understands nothing: it writes every request and the data that came with it to a folder, and
// answers with the bytes that the test has put there. Recording.h tells what lies in the folder.

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <string>
#include <thread>

#include "platform/Environment.h"
#include "platform/ProcessWatch.h"
#include "processbridge/NamedSemaphore.h"
#include "processbridge/ResourceNames.h"
#include "processbridge/SharedMemoryFile.h"

namespace {

using Morvane::ProcessBridge::NamedSemaphore;
using Morvane::ProcessBridge::ResourceNames;
using Morvane::ProcessBridge::SharedMemoryFile;
using Path = std::filesystem::path;

void writeTexts(const Path& file, char** texts) {
    std::ofstream stream(file, std::ios::binary);
    for (; *texts != nullptr; ++texts) {
        stream << *texts << '\0';
    }
}

std::string readBytes(const Path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// A test that is killed must not leave this process behind.
void endWithParent() {
    std::thread([] {
        const Morvane::Platform::ProcessWatch parent(getppid());
        parent.wait();
        std::_Exit(EXIT_SUCCESS);
    }).detach();
}

class RecordingWorker {
public:
    RecordingWorker(const ResourceNames& names, const Path& folder)
        : folder(folder),
          requests(folder / "requests", std::ios::binary | std::ios::app),
          data(names.dataFile, false),
          request(names.requestFile, false),
          ready(names.readySemaphore, false, 0),
          done(names.doneSemaphore, false, 0) {}

    [[noreturn]] void serve() {
        for (;;) {
            ready.acquire(1);
            const std::string text = requestText();
            const std::string head = text.substr(0, 9);
            recordPayload();
            requests << text << '\0' << std::flush;
            answer(head, ++seen[head]);
            done.release(1);
        }
    }

private:
    std::string requestText() {
        request.map();
        std::string text(request.data(), strnlen(request.data(), request.size()));
        request.unmap();
        return text;
    }

    void recordPayload() {
        data.map();
        std::ofstream stream(folder / "payloads" / std::to_string(++count), std::ios::binary);
        stream.write(data.data(), static_cast<std::streamsize>(data.size()));
    }

    void answer(const std::string& head, int turn) {
        const Path script = folder / "script";
        Path entry = script / (head + "." + std::to_string(turn));
        if (!is_regular_file(entry)) {
            entry = script / head;
        }
        const std::string bytes = is_regular_file(entry) ? readBytes(entry) : std::string("answer 0\0", 9);
        const std::string verb = bytes.substr(0, bytes.find(' '));
        if (verb == "hold") {
            for (;;) {
                pause();
            }
        }
        if (verb == "die") {
            std::raise(SIGKILL);
        }
        const std::string reply = bytes.substr(verb.size() + 1);
        if (data.resize(reply.size())) {
            std::memcpy(data.data(), reply.data(), reply.size());
        }
        data.unmap();
    }

    const Path folder;
    std::ofstream requests;
    SharedMemoryFile data;
    SharedMemoryFile request;
    NamedSemaphore ready;
    NamedSemaphore done;
    int count = 0;
    std::map<std::string, int> seen;  ///< how often each head has come
};

}  // namespace

int main(int argumentCount, char** arguments) {
    const char* folder = std::getenv("CORVEL_TEST_RECORDING");
    if (folder == nullptr || argumentCount < 2) {
        std::cerr << "usage: CORVEL_TEST_RECORDING=FOLDER recording_worker BRIDGE MODE" << std::endl;
        return 2;
    }
    endWithParent();
    writeTexts(Path(folder) / "arguments", arguments);
    writeTexts(Path(folder) / "environment", Morvane::Platform::environment());
    RecordingWorker(ResourceNames(arguments[1]), folder).serve();
}
