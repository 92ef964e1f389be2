// The worker's whole request loop in process; MODE says in which mode. An input is a row of requests, one a
// line, each with a payload after a tab. Every request gets exactly one answer, and none ends the loop. In
// the working folder are the small movies of the reader's own corpus, MOVIES, under their names.

#include <semaphore.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

extern "C" {
#include <libavutil/log.h>
}

#include "processbridge/NamedSemaphore.h"
#include "processbridge/ResourceNames.h"
#include "processbridge/SharedMemoryFile.h"
#include "property/FieldEncoding.h"
#include "tests/fuzz/FuzzPlace.h"
#include "worker/bridge/BridgeEnd.h"
#include "worker/bridge/RequestLoop.h"
#include "worker/output/VideoOutputMode.h"
#include "worker/read/ReadMode.h"
#include "worker/write/WriteMode.h"

using namespace Morvane;

namespace {

enum Kind { Write, Read, VideoOutput };

std::unique_ptr<Worker::Mode> makeMode() {
    if constexpr (MODE == Write)
        return std::make_unique<Worker::WriteMode>();
    else if constexpr (MODE == Read)
        return std::make_unique<Worker::ReadMode>();
    else
        return std::make_unique<Worker::VideoOutputMode>(
            [] { return decltype(Worker::findOutputDevices()){}; });
}

// A dialog would wait for a person, and a picture of any size would be encoded for long.
bool isPassedOver(const std::string& request) {
    const int opcode = Property::parseOpcode(request);
    return MODE == Write && (opcode == 8 || opcode == 3 || request.size() > 200);
}

class Host {
public:
    Host()
        : dataFile(names.dataFile, true),
          requestFile(names.requestFile, true),
          ready(names.readySemaphore, true, 0),
          done(names.doneSemaphore, true, 0),
          bridge(names) {
        countOfAnswers = sem_open(Worker::semaphoreName(names.doneSemaphore).c_str(), 0);
        if constexpr (MODE == Read)
            copyMovies();
    }

    void ask(Worker::RequestLoop& loop, const std::string& request, const std::string& payload) {
        put(dataFile, payload);
        put(requestFile, request);
        loop.serve();
        if (sem_trywait(countOfAnswers) != 0 || sem_trywait(countOfAnswers) == 0)
            std::abort();
    }

    Worker::BridgeEnd& end() { return bridge; }
    const std::filesystem::path& folder() const { return place.folder(); }

private:
    // By its bytes alone: confined, a file's rights cannot be set.
    void copyMovies() {
        for (const auto& movie : std::filesystem::directory_iterator(MOVIES)) {
            std::ofstream copy(place.folder() / movie.path().filename(), std::ios::binary);
            if (!(copy << std::ifstream(movie.path(), std::ios::binary).rdbuf()))
                std::abort();
        }
    }

    static void put(ProcessBridge::SharedMemoryFile& file, const std::string& text) {
        if (!file.resize(text.size() + 1))
            std::abort();
        std::memcpy(file.data(), text.c_str(), text.size() + 1);
        file.unmap();
    }

    Fuzz::FuzzPlace place;
    const ProcessBridge::ResourceNames names{std::to_string(100000000000 + getpid()) +
                                             "00000000000000000000"};
    ProcessBridge::SharedMemoryFile dataFile, requestFile;
    ProcessBridge::NamedSemaphore ready, done;
    Worker::BridgeEnd bridge;
    sem_t* countOfAnswers;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Host host;
    av_log_set_level(AV_LOG_QUIET);
    if (chdir(host.folder().c_str()) != 0)
        std::abort();
    const std::unique_ptr<Worker::Mode> mode = makeMode();
    Worker::RequestLoop loop(host.end(), *mode);
    std::istringstream lines(std::string(reinterpret_cast<const char*>(data), size));
    int requests = 0;
    for (std::string line; requests < 20 && std::getline(lines, line); ++requests) {
        const std::size_t tab = line.find('\t');
        const std::string request = line.substr(0, tab);
        if (!isPassedOver(request))
            host.ask(loop, request, tab == std::string::npos ? "" : line.substr(tab + 1));
    }
    return 0;
}
