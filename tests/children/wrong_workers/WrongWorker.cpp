// Workers that break one promise of the bridge's protocol each, on purpose. WRONG_WAY says which; everything
// else that a worker without codecs, movies and devices can do, they do right.

#include <semaphore.h>
#include <sys/types.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <string>

#include "processbridge/NamedSemaphore.h"
#include "processbridge/ResourceNames.h"
#include "processbridge/SharedMemoryFile.h"

namespace {

using namespace Morvane::ProcessBridge;

// Each is one program.
enum WrongWay { AnswersTwice, DiesOfGarbage, DeafToSigterm, OutlivesItsHost, ListsNamesOnly, FallsSilent };

std::string answerTo(const std::string& request) {
    if (request == "W0000000e") {
        return WRONG_WAY == ListsNamesOnly ? "Motion JPEG A:Animation" : "none\tNothing";
    }
    if (request == "V0000000b") {
        return "";
    }
    return "Error: -50";
}

bool isGarbage(const std::string& request) {
    return request.size() < 9 || request.find_first_not_of("0123456789abcdef", 1) < 9;
}

void serve(const std::string& bridgeName) {
    // Not destroyed: they would be unlinked, and they are the host's.
    const ResourceNames names(bridgeName);
    auto& dataFile = *new SharedMemoryFile(names.dataFile, false);
    auto& requestFile = *new SharedMemoryFile(names.requestFile, false);
    auto& ready = *new NamedSemaphore(names.readySemaphore, false, 0);
    auto& done = *new NamedSemaphore(names.doneSemaphore, false, 0);
    for (;;) {
        ready.acquire(1);
        requestFile.map();
        const std::string request(requestFile.data(), strnlen(requestFile.data(), requestFile.size()));
        requestFile.unmap();
        if (WRONG_WAY == DiesOfGarbage && isGarbage(request)) {
            _exit(1);
        }
        if (WRONG_WAY == FallsSilent && request != "W0000000e") {
            for (;;) {
                pause();
            }
        }
        const std::string answer = answerTo(request);
        dataFile.resize(answer.size() + 1);
        std::memcpy(dataFile.data(), answer.c_str(), answer.size() + 1);
        dataFile.unmap();
        done.release(WRONG_WAY == AnswersTwice ? 2 : 1);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    if (WRONG_WAY == DeafToSigterm) {
        std::signal(SIGTERM, SIG_IGN);
    }
    serve(argv[1]);
}
