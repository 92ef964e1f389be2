// A worker that answers every request at once with "0" and does nothing: what remains is the bridge's own
// cost.

#include <csignal>
#include <cstdint>
#include <cstdio>

#include "quicktime/QuickTimeCodecTask.h"
#include "worker/bridge/BridgeEnd.h"

constexpr std::int32_t addFrame = 1, configure = 5;

int main(int argc, char** argv) {
    using namespace Morvane;
    if (argc != 3) {
        std::fputs("usage: InstantWorker BRIDGE-NAME MODE\n", stderr);
        return 2;
    }
    std::signal(SIGTERM, SIG_DFL);
    Worker::BridgeEnd bridge{ProcessBridge::ResourceNames(argv[1])};
    std::uint64_t frameBytes = 0;
    for (;;) {
        bridge.waitForRequest();
        const QuickTime::QuickTimeCodecWriteTask task(bridge.readRequest());
        if (task.opcode == configure) {
            frameBytes = std::uint64_t{16} * static_cast<std::uint64_t>(task.width) *
                         static_cast<std::uint64_t>(task.height);
        } else if (task.opcode == addFrame) {
            bridge.payload(frameBytes);
        }
        bridge.writeAnswer("0");
        bridge.postDone();
    }
}
