// Sends frames to the network device as fast as it takes them and looks when each of them arrives.
//
// Usage: video_output_pace [FRAMES [WIDTH HEIGHT RATE]], without arguments 600 frames of 1920 x 1080 at 25.
// Exit code 1 when the mean rate is off by more than 0.1 % or a frame is missing; only an idle machine can
// tell.

#include <arpa/inet.h>
#include <fmt/format.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "quicktime/QuickTimeVideoOutputIPCController.h"

namespace {

using Clock = std::chrono::steady_clock;
using Morvane::QuickTime::VideoOutputHandle;

constexpr std::size_t packetBytes = 188;  // of a transport stream
constexpr unsigned videoStream = 0x100;   // the first stream's packet identifier
constexpr double tolerance = 0.001;

/// Notes when the first packet of each frame arrives on a port of this machine that nobody else has.
class Receiver {
public:
    Receiver() : descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        const timeval patience{2, 0};
        if (bind(descriptor, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
            setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience) != 0) {
            std::abort();
        }
        port = ntohs(address.sin_port);
        thread = std::thread([this] { receive(); });
    }

    ~Receiver() {
        if (thread.joinable()) {
            thread.join();
        }
        close(descriptor);
    }

    /// When each frame arrived; waits until nothing has come for two seconds.
    const std::vector<Clock::time_point>& arrivals() {
        thread.join();
        return times;
    }

    int port = 0;

private:
    void receive() {
        std::vector<unsigned char> datagram(65536);
        for (;;) {
            const ssize_t length = recv(descriptor, datagram.data(), datagram.size(), 0);
            const auto now = Clock::now();
            if (length <= 0 && !times.empty()) {
                return;
            }
            for (std::size_t at = 0;
                 at + packetBytes <= static_cast<std::size_t>(std::max<ssize_t>(length, 0));
                 at += packetBytes) {
                const bool startsFrame = (datagram[at + 1] & 0x40U) != 0;
                const unsigned stream = (datagram[at + 1] & 0x1fU) << 8U | datagram[at + 2];
                if (startsFrame && stream == videoStream) {
                    times.push_back(now);
                }
            }
        }
    }

    int descriptor;
    std::vector<Clock::time_point> times;
    std::thread thread;
};

/// A ramp with a bar that moves, so that no two frames are the same.
void drawFrame(std::vector<float>& frame, int width, int height, int number) {
    for (int y = 0; y < height; ++y) {
        float* row = frame.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width) * 4;
        for (int x = 0; x < width; ++x) {
            const bool bar = x / 32 == number % (width / 32);
            std::fill_n(row + x * 4, 3, bar ? 1.0F : static_cast<float>(x) / static_cast<float>(width));
        }
    }
}

/// A folder in memory for what host and worker share, as the host makes one; on a disk the frames would wait
/// for it.
class SharedFolder {
public:
    SharedFolder() : path(fmt::format("/dev/shm/corvel-pace-{}", getpid())) {
        std::filesystem::create_directory(path);
        setenv("CORVEL_TEMP_DIR", path.c_str(), 1);
    }
    ~SharedFolder() { std::filesystem::remove_all(path); }
    SharedFolder(const SharedFolder&) = delete;
    SharedFolder& operator=(const SharedFolder&) = delete;

private:
    const std::filesystem::path path;
};

int send(int frames, int width, int height, double rate, int port) {
    const SharedFolder folder;
    const auto network = reinterpret_cast<VideoOutputHandle>(1);
    const std::unique_ptr<Morvane::QuickTime::QuickTimeVideoOutputIPCController> output(
        Morvane::QuickTime::createVideoOutputController(network, fmt::format("Network 127.0.0.1:{}", port)));
    const auto thousandths = static_cast<std::int32_t>(std::lround(rate * 1000));
    if (output->selectMode({width, height, "", thousandths}, 0) != 0) {
        return 2;
    }
    constexpr int different = 8;
    std::vector<std::vector<float>> drawn(
        different,
        std::vector<float>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4));
    for (int number = 0; number < different; ++number) {
        drawFrame(drawn[static_cast<std::size_t>(number)], width, height, number);
    }
    for (int number = 0; number < frames; ++number) {
        output->sendFrame(
            reinterpret_cast<const char*>(drawn[static_cast<std::size_t>(number % different)].data()));
    }
    output->closeOutput();
    return 0;
}

int report(const std::vector<Clock::time_point>& arrivals, int frames, double rate) {
    const std::chrono::duration<double> span = arrivals.back() - arrivals.front();
    const double mean = static_cast<double>(arrivals.size() - 1) / span.count();
    std::vector<double> errors;  // milliseconds from an even beat
    for (std::size_t frame = 0; frame < arrivals.size(); ++frame) {
        const std::chrono::duration<double, std::milli> since = arrivals[frame] - arrivals.front();
        errors.push_back(std::abs(since.count() - static_cast<double>(frame) * 1000 / rate));
    }
    std::sort(errors.begin(), errors.end());
    fmt::print(
        "{} of {} frames arrived, mean rate {:.4f} ({:+.4f} %), off the beat by {:.2f} ms (median), {:.2f} "
        "ms "
        "(99 of 100), {:.2f} ms (worst)\n",
        arrivals.size(), frames, mean, (mean / rate - 1) * 100, errors[errors.size() / 2],
        errors[errors.size() * 99 / 100], errors.back());
    const bool good =
        arrivals.size() == static_cast<std::size_t>(frames) && std::abs(mean / rate - 1) <= tolerance;
    return good ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const int frames = argc > 1 ? std::atoi(argv[1]) : 600;
    const int width = argc > 4 ? std::atoi(argv[2]) : 1920;
    const int height = argc > 4 ? std::atoi(argv[3]) : 1080;
    const double rate = argc > 4 ? std::atof(argv[4]) : 25;
    Receiver receiver;
    if (const int failure = send(frames, width, height, rate, receiver.port); failure != 0) {
        fmt::print(stderr, "the network device has no mode {} x {}, {}\n", width, height, rate);
        std::_Exit(failure);
    }
    return report(receiver.arrivals(), frames, rate);
}
