// Any file may be given as a movie's sound: it is decoded and has a track made of it, or is refused with a
// StatusError. The worker does the first in a process of its own, which a fuzzer cannot look into; here both
// are done in one.

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/fuzz/DecodedInput.h"
#include "worker/movie/SoundMedia.h"
#include "worker/sound/SoundDecoder.h"

using namespace Morvane::Worker;

namespace {

// Some bytes may stand for very much silence.
constexpr std::size_t mostSoundBytes = std::size_t{16} << 20;
constexpr std::int64_t mostSilence = 1000;  // sample frames

void makeTrack(const std::string& path) {
    SoundDecoder sound(path);
    if (sound.startDelay() < 0)
        std::abort();
    const std::size_t frameBytes = sound.format().bytesPerFrame();
    std::size_t written = 0;
    SoundTrackWriter track(sound.format(), [&written](ByteView media) {
        const std::size_t place = written;
        written += media.size();
        return static_cast<std::int64_t>(place);
    });
    const std::int64_t silence = std::min(sound.startDelay(), mostSilence);
    track.addSilence(silence);
    std::size_t given = static_cast<std::size_t>(silence) * frameBytes;
    std::vector<std::uint8_t> block;
    while (given < mostSoundBytes && sound.read(block)) {
        if (block.empty() || block.size() % frameBytes != 0)
            std::abort();
        track.add(block);
        given += block.size();
    }
    track.finish();
    if (written != given)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Morvane::Fuzz::decodeInput(data, size, makeTrack);
    return 0;
}
