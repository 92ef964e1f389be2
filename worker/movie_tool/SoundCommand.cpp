#include "worker/Status.h"
#include "worker/movie_tool/Commands.h"
#include "worker/sound/SoundFile.h"

#include <fmt/core.h>

#include <cstdint>
#include <vector>

namespace Morvane::Worker {

void soundCommand(const std::string& path) {
    SoundFile sound(path);
    // Some files only show when they are decoded that there is nothing in them.
    std::vector<std::uint8_t> block;
    if (!sound.read(block)) {
        throw StatusError(Status::BadArgument,
                          fmt::format("cannot read sound from {}: it holds not one sample", path));
    }
    const SoundFormat& format = sound.format();
    fmt::print("{}: {} channel{} ({}), {} Hz, {} bits\n", path, format.channels,
               format.channels == 1 ? "" : "s", format.layout, format.sampleRate,
               8 * format.bytesPerSample());
}

}  // namespace Morvane::Worker
