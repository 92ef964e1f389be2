// What the bridge costs beside the bare system calls that it cannot do without, in one run: an empty request,
// and the hand-over of a frame.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <semaphore.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "benches/parts/MedianOf.h"
#include "quicktime/QuickTimeCodecWriterIPCController.h"

namespace {

using Clock = std::chrono::steady_clock;

template <typename Work>
double seconds(Work work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// A shared file with nothing around it.
class BareFile {
public:
    explicit BareFile(std::size_t length) : length(length) {
        const char* folder = std::getenv("CORVEL_TEMP_DIR");
        std::string path = std::string(folder == nullptr ? "/tmp" : folder) + "/bridge_bench-XXXXXX";
        descriptor = mkstemp(path.data());
        unlink(path.c_str());
        if (posix_fallocate(descriptor, 0, static_cast<off_t>(length)) != 0) {
            std::abort();
        }
    }
    ~BareFile() { close(descriptor); }

    char* map(int flags = 0) const {
        void* const place = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED | flags, descriptor, 0);
        return place == MAP_FAILED ? nullptr : static_cast<char*>(place);
    }
    void unmap(char* place) const { munmap(place, length); }

    const std::size_t length;

private:
    int descriptor;
};

/// Two processes that hand the turn to each other by two semaphores, each mapping and unmapping both files
/// once a turn.
class BareExchange {
public:
    BareExchange() {
        semaphores = static_cast<sem_t*>(
            mmap(nullptr, 2 * sizeof(sem_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
        sem_init(&semaphores[0], 1, 0);
        sem_init(&semaphores[1], 1, 0);
        other = fork();
        if (other == 0) {
            for (;;) {
                sem_wait(&semaphores[0]);
                touchBoth();
                sem_post(&semaphores[1]);
            }
        }
    }
    ~BareExchange() {
        kill(other, SIGKILL);
        waitpid(other, nullptr, 0);
        munmap(semaphores, 2 * sizeof(sem_t));
    }

    void run() {
        touch(request);
        sem_post(&semaphores[0]);
        sem_wait(&semaphores[1]);
        touch(data);
    }

private:
    static void touch(const BareFile& file) {
        char* const place = file.map();
        place[0] = static_cast<char>(place[0] + 1);
        file.unmap(place);
    }
    void touchBoth() const {
        touch(request);
        touch(data);
    }

    const BareFile request{64};
    const BareFile data{64};
    sem_t* semaphores = nullptr;
    pid_t other = 0;
};

std::unique_ptr<Morvane::QuickTime::QuickTimeCodecWriterIPCController> makeController() {
    return std::unique_ptr<Morvane::QuickTime::QuickTimeCodecWriterIPCController>(
        Morvane::QuickTime::createWriterController());
}

/// Counters: the median of each in microseconds, and the request as a multiple of the bare exchange.
void emptyRequest(benchmark::State& state) {
    BareExchange bare;
    const auto controller = makeController();
    std::vector<double> bareTimes, requests;
    for ([[maybe_unused]] const auto turn : state) {
        bareTimes.push_back(seconds([&] { bare.run(); }));
        requests.push_back(seconds([&] { controller->finishVideo(); }));
        state.SetIterationTime(requests.back());
    }
    state.counters["bare_us"] = medianOf(bareTimes) * 1e6;
    state.counters["request_us"] = medianOf(requests) * 1e6;
    state.counters["times_bare"] = medianOf(requests) / medianOf(bareTimes);
}

/// One frame of floats from `acquireBuffer` to `releaseBuffer`, beside the mapping of as many bytes with all
/// their pages and a copy into them. Counters: medians in milliseconds, and the ratio.
void handOver(benchmark::State& state) {
    const std::size_t samples = static_cast<std::size_t>(state.range(0) * state.range(1) * 4);
    const std::vector<float> frame(samples, 0.5F);
    const std::size_t bytes = samples * sizeof(float);
    const BareFile file(bytes);
    const auto controller = makeController();
    controller->configure(static_cast<std::int32_t>(state.range(0)),
                          static_cast<std::int32_t>(state.range(1)), 1, 3, false, "", 24);
    std::vector<double> bareTimes, handOvers;
    for ([[maybe_unused]] const auto turn : state) {
        bareTimes.push_back(seconds([&] {
            char* const place = file.map(MAP_POPULATE);
            std::memcpy(place, frame.data(), bytes);
            file.unmap(place);
        }));
        handOvers.push_back(seconds([&] {
            char* const buffer = controller->acquireBuffer(samples);
            std::memcpy(buffer, frame.data(), bytes);
            controller->addFrame(0, buffer, false);
            controller->releaseBuffer(buffer);
        }));
        state.SetIterationTime(handOvers.back());
    }
    state.counters["bare_ms"] = medianOf(bareTimes) * 1e3;
    state.counters["hand_over_ms"] = medianOf(handOvers) * 1e3;
    state.counters["times_bare"] = medianOf(handOvers) / medianOf(bareTimes);
}

}  // namespace

BENCHMARK(emptyRequest)->UseManualTime()->Unit(benchmark::kMicrosecond)->MinTime(1);
BENCHMARK(handOver)
    ->Args({1920, 1080})
    ->Args({3840, 2160})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(1);

BENCHMARK_MAIN();
