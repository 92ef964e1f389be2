#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

extern "C" {
#include <libavutil/log.h>
}

#include "platform/Confinement.h"
#include "platform/Descriptors.h"
#include "platform/SemaphoreOwner.h"
#include "worker/FailureReport.h"
#include "worker/app/Lifetime.h"
#include "worker/app/ModeTable.h"
#include "worker/bridge/BridgeEnd.h"
#include "worker/bridge/RequestLoop.h"

namespace Morvane::Worker {
namespace {

/// The process to live and die with.
pid_t findHost(const ProcessBridge::ResourceNames& names) {
    const pid_t host = Platform::ancestorWithSemaphore(semaphoreName(names.readySemaphore));
    if (host == 0)
        throw std::runtime_error("the program that made this bridge is gone");
    return host;
}

/// Movies may come from anywhere, so what decodes them gets along with reading files and the bridge. Its
/// semaphores are open by now; their names and the shared files must be removable should the host die.
void confineDecoder() {
    constexpr std::uint64_t longestFrame = std::uint64_t{4} << 30;  // bytes of the shared file
    const char* folder = std::getenv("CORVEL_TEMP_DIR");
    Platform::confine({.readable = {"/"},
                       .writable = {std::string(folder == nullptr ? "/tmp" : folder) + "/processbridge"},
                       .removable = {"/dev/shm"},
                       .memoryBytes = Platform::generousMemoryBytes(),
                       .fileBytes = longestFrame});
}

void serve(const ProcessBridge::ResourceNames& names, std::unique_ptr<Mode> mode, bool confined) {
    BridgeEnd bridge(names);
    if (confined && Platform::isConfinementWanted())
        confineDecoder();
    RequestLoop loop(bridge, *mode);
    const pid_t host = findHost(names);
    Lifetime lifetime(
        host, [&] { loop.end(); }, [&] { removeSharedObjects(names); });
    // Looked for again now that it is watched: its number could have changed hands in between.
    if (findHost(names) != host)
        throw std::runtime_error("the program that made this bridge has just ended");
    loop.run();
    // What is still open is closed within the time that is left to us.
    mode.reset();
    if (lifetime.hostDied())
        removeSharedObjects(names);
}

int run(int argc, char** argv) {
    std::unique_ptr<Mode> mode = argc == 3 ? makeMode(argv[2]) : nullptr;
    if (mode == nullptr || std::string(argv[1]).find('/') != std::string::npos) {
        std::fputs(("usage: CorvelQuickTimeHelper-32 BRIDGE-NAME " + modeWords() + "\n").c_str(), stderr);
        return 2;
    }
    serve(ProcessBridge::ResourceNames(argv[1]), std::move(mode), isConfinedMode(argv[2]));
    return 0;
}

}  // namespace
}  // namespace Morvane::Worker

int main(int argc, char** argv) {
    using namespace Morvane;
    Platform::closeDescriptorsFrom(3);
    Worker::prepareSignals();
    // Failures are told by us, one line each; the library's own remarks would drown them.
    av_log_set_level(AV_LOG_QUIET);
    try {
        return Worker::run(argc, argv);
    } catch (const std::system_error& error) {
        const bool isThread = error.code() == std::errc::resource_unavailable_try_again;
        Worker::reportRemark(isThread ? "no room for another thread" : error.what());
        return 1;
    } catch (const std::exception& error) {
        Worker::reportRemark(error.what());
        return 1;
    }
}
