// Reads a movie's frames as a host does: through the reader's controller, out of a worker.
//
// Usage: read_movie MOVIE [COUNT]: all frames in order, or COUNT of them at random.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <vector>

#include "benches/reading/RandomFrames.h"
#include "platform/LargeMemory.h"
#include "quicktime/QuickTimeCodecReaderIPCController.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        return 2;
    }
    const std::unique_ptr<Morvane::QuickTime::QuickTimeCodecReaderIPCController> movie(
        Morvane::QuickTime::createReaderController());
    if (movie->openFile(argv[1], 1) != 0) {
        return 1;
    }
    const int frames = movie->getFrameCount();
    std::int32_t width = 0, height = 0, channels = 0, numerator = 0, denominator = 0, bits = 0;
    float rate = 0;
    movie->getInfo(width, height, channels, rate, numerator, denominator, bits);
    const Morvane::Platform::LargeMemory pixels = Morvane::Platform::allocateLarge(
        static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4 * sizeof(float));
    std::vector<int> numbers(static_cast<std::size_t>(frames));
    std::iota(numbers.begin(), numbers.end(), 0);
    if (argc > 2) {
        numbers = randomFrames(std::atoi(argv[2]), frames);
    }
    for (const int number : numbers) {
        if (movie->readFrame(number, reinterpret_cast<char*>(pixels.get())) != 0) {
            std::fprintf(stderr, "frame %d cannot be read\n", number);
            return 1;
        }
    }
    return 0;
}
