// Any file may be given as a movie: it is read or refused with a StatusError.

#include <string>
#include <vector>

#include "tests/fuzz/DecodedInput.h"
#include "worker/Status.h"
#include "worker/read/MovieReader.h"

using namespace Morvane::Worker;

namespace {

constexpr std::uint64_t mostFrameBytes = std::uint64_t{64} << 20;

void readAll(const std::string& path) {
    MovieReader reader(path, MovieReader::Access::Frames);
    reader.metadata();
    reader.properties();
    reader.description().text();
    const std::uint64_t bytes = reader.description().frameBytes();
    // Onwards, over some, back.
    for (const int frame : {0, 1, 3, 2, 0}) {
        try {
            reader.decode(frame);
            if (bytes <= mostFrameBytes) {
                std::vector<float> pixels(bytes / sizeof(float));
                reader.convert(pixels);
            }
        } catch (const StatusError&) {
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Morvane::Fuzz::decodeInput(data, size, readAll);
    return 0;
}
