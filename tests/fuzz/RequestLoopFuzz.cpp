// The worker's whole request loop in process; MODE says in which mode. An input is a row of requests, one a
// line, each with a payload after a tab. Every request gets exactly one answer, and none ends the loop. In
// the working folder are the small movies of the reader's own corpus, MOVIES, under their names. A payload is
// followed by zeros, enough of them for a small picture and some sound.

#include <semaphore.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>

extern "C" {
#include <libavutil/log.h>
}

#include "processbridge/NamedSemaphore.h"
#include "processbridge/ResourceNames.h"
#include "processbridge/SharedMemoryFile.h"
#include "property/FieldEncoding.h"
#include "tests/fuzz/FuzzPlace.h"
#include "worker/Status.h"
#include "worker/bridge/BridgeEnd.h"
#include "worker/bridge/RequestLoop.h"
#include "worker/output/VideoOutputMode.h"
#include "worker/read/ReadMode.h"
#include "worker/write/WriteMode.h"

using namespace Morvane;

namespace {

enum Kind { Write, Read, VideoOutput };

constexpr std::size_t payloadBytes = std::size_t{1} << 15;

/// Takes frames of two small modes and shows them nowhere.
class Port : public Worker::OutputPort {
public:
    std::size_t pictureBytes() const override { return 1; }
    void convert(const float* rgba, std::uint8_t* picture) override {
        *picture = static_cast<std::uint8_t>(rgba[0] > 0);
    }
    void show(const std::uint8_t* /*picture*/) override {}
};

class Device : public Worker::OutputDevice {
public:
    std::string name() const override { return "Nowhere: \"a\", b"; }
    std::vector<Worker::OutputMode> modes() const override {
        return {{2, 1, {1000, 1}}, {64, 32, {1000, 1}}};
    }
    int bitsPerChannel() const override { return 8; }
    std::string lockKey(const std::string& title) const override {
        if (title == "unusable")
            throw Worker::StatusError(Worker::Status::BadArgument, "cannot use that title");
        static const std::string key = "fuzz-" + std::to_string(std::random_device()());
        return key;
    }
    std::unique_ptr<Worker::OutputPort> open(const Worker::OutputMode&, Worker::Presentation,
                                             const std::string& title) const override {
        if (title == "broken")
            throw Worker::StatusError(Worker::Status::InputOutput, "cannot open the broken one");
        return std::make_unique<Port>();
    }
};

[[maybe_unused]] std::vector<std::unique_ptr<Worker::OutputDevice>> findDevices() {
    std::vector<std::unique_ptr<Worker::OutputDevice>> devices;
    devices.push_back(std::make_unique<Device>());
    return devices;
}

std::unique_ptr<Worker::Mode> makeMode() {
    if constexpr (MODE == Write)
        return std::make_unique<Worker::WriteMode>();
    else if constexpr (MODE == Read)
        return std::make_unique<Worker::ReadMode>();
    else
        return std::make_unique<Worker::VideoOutputMode>(findDevices);
}

// A dialog would wait for a person, a sound file is decoded by another process, which is out of reach here,
// and a picture of any size would be encoded for long.
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
        put(dataFile, payload, payloadBytes);
        put(requestFile, request, 0);
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

    static void put(ProcessBridge::SharedMemoryFile& file, std::string text, std::size_t zeros) {
        text.append(zeros + 1, '\0');
        if (!file.resize(text.size()))
            std::abort();
        std::memcpy(file.data(), text.data(), text.size());
        file.unmap();
    }

    // A video output's device is locked by a file in /tmp.
    Fuzz::FuzzPlace place{MODE == VideoOutput ? "/tmp" : "."};
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
