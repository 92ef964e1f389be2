// A worker that a host can start instead of its own: one codec, uncompressed frames. It shows what every
// worker has to do, in the order in which it happens; docs/writing-a-worker.md walks through it.

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "RawMovie.h"
#include "processbridge/NamedSemaphore.h"
#include "processbridge/ResourceNames.h"
#include "processbridge/SharedMemoryFile.h"
#include "property/FieldEncoding.h"
#include "property/NumberText.h"
#include "quicktime/QuickTimeCodecTask.h"

namespace {

using namespace Morvane;

constexpr int ioError = -36, badArgument = -50;
constexpr int longestSide = 16384;  // pixels

// The host's files and semaphores. Their destructors remove them from the system, which is the host's
// business while it lives: so this is destroyed only after the host has died.
struct Bridge {
    explicit Bridge(const ProcessBridge::ResourceNames& names)
        : data(names.dataFile, false),
          request(names.requestFile, false),
          ready(names.readySemaphore, false, 0),
          done(names.doneSemaphore, false, 0) {}

    // Up to the first zero byte, and never beyond the file's end: what the other process wrote is not
    // trusted.
    std::string readRequest() {
        if (!request.map()) {
            return "";
        }
        std::string text(request.data(), strnlen(request.data(), request.size()));
        request.unmap();
        return text;
    }

    void answer(const std::string& text) {
        if (data.resize(text.size() + 1)) {
            std::memcpy(data.data(), text.c_str(), text.size() + 1);
            data.unmap();
        }
        done.release(1);
    }

    ProcessBridge::SharedMemoryFile data, request;
    ProcessBridge::NamedSemaphore ready, done;
};

// One movie after the other, for mode "write".
class Writer {
public:
    explicit Writer(ProcessBridge::SharedMemoryFile& dataFile) : data(dataFile) {}

    std::string carryOut(const QuickTime::QuickTimeCodecWriteTask& task) {
        switch (task.opcode) {
            case 0:  // openFile
                return open(task.fileName, task.mode);
            case 1:  // addFrame
                return movie ? addFrame() : error(badArgument);
            case 4:  // closeFile
                return close();
            case 5:  // configure; the settings text in the data file has nothing for this worker
                settings = task;
                return "";
            case 10:  // getCodec: there is only one
                return "0";
            case 14:  // codecList
                return Property::joinFields({"raw \tUncompressed"});
            case 15:
                return Property::numberText(settings.framesPerSecond);
            case 16:
                return Property::numberText(settings.quality);
            case 17:
                return Property::numberText(settings.keyFrameRate);
            case 2:  // finishVideo: every frame is written already
            case 9:  // setCodec
                return "0";
            default:  // sound, time code, dialogs: not here
                return error(badArgument);
        }
    }

    static std::string error(int status) { return "Error: " + std::to_string(status); }

private:
    std::string open(const std::string& path, int mode) {
        const bool good = std::clamp(settings.width, 1, longestSide) == settings.width &&
                          std::clamp(settings.height, 1, longestSide) == settings.height &&
                          settings.framesPerSecond > 0 && settings.framesPerSecond < 1000;
        if (movie || !good || (mode == 0 && access(path.c_str(), F_OK) == 0)) {
            return std::to_string(badArgument);
        }
        auto opened =
            std::make_unique<RawMovie>(path, settings.width, settings.height, settings.framesPerSecond);
        if (!opened->isOpen()) {
            std::perror(path.c_str());
            return std::to_string(ioError);
        }
        movie = std::move(opened);
        return "0";
    }

    std::string addFrame() {
        const std::uint64_t bytes = movie->frameBytes();
        if (!data.map() || data.size() < bytes || data.lengthOnDisk() < bytes) {
            return error(badArgument);
        }
        return movie->add(reinterpret_cast<const float*>(data.data())) ? "0" : error(ioError);
    }

    std::string close() {
        const int status = !movie ? badArgument : movie->close() ? 0 : ioError;
        movie.reset();
        return std::to_string(status);
    }

    ProcessBridge::SharedMemoryFile& data;
    QuickTime::QuickTimeCodecWriteTask settings{"W00000005:0:0:0:0:0:0"};
    std::unique_ptr<RawMovie> movie;
};

// Where the protocol has a status for an answer, a failure is the bare number, elsewhere "Error: " comes
// first. For the two modes that this worker does not serve.
std::string refusal(const std::string& request) {
    const char* const statuses[] = {"R00000001", "R00000003", "V00000002", "V00000004"};
    for (const char* head : statuses) {
        if (request.compare(0, 9, head) == 0) {
            return std::to_string(badArgument);
        }
    }
    return request.compare(0, 9, "V0000000b") == 0 ? "" : Writer::error(badArgument);  // no devices
}

std::string answerTo(const std::string& request, bool writes, Writer& writer) {
    try {
        return writes ? writer.carryOut(QuickTime::QuickTimeCodecWriteTask(request)) : refusal(request);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "example worker: %s\n", failure.what());
        return Writer::error(badArgument);
    }
}

}  // namespace

// Arguments: the bridge name and the mode.
int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    // Ctrl-C is for the host, which ends us with SIGTERM when it is done.
    std::signal(SIGINT, SIG_IGN);
    Bridge bridge{ProcessBridge::ResourceNames(argv[1])};
    Writer writer(bridge.data);
    std::atomic<bool> hostDied{false};
    const std::jthread watch([&, host = getppid()] {
        while (getppid() == host) {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
        }
        hostDied = true;
        bridge.ready.release(1);
    });

    // One answer for every request, whatever it says; nothing that a host sends ends the loop.
    for (;;) {
        bridge.ready.acquire(1);
        if (hostDied) {
            return 0;  // and Bridge removes what the host can't
        }
        bridge.answer(answerTo(bridge.readRequest(), std::strcmp(argv[2], "write") == 0, writer));
    }
}
