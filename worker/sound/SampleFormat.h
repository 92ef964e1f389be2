#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Morvane::Worker {

/// The sound samples that a host hands over one block at a time: 4 bytes a sample frame in this machine's
/// byte order, which leaves three forms: one channel of 32-bit float, one channel of 32-bit integer, two
/// channels of 16-bit integer.
struct SampleFormat {
    static constexpr std::size_t bytesPerFrame = 4;

    int channels = 1;
    bool floatingPoint = false;
    std::uint32_t sampleRate = 48000;  ///< sample frames a second
    std::string layout;  ///< libav's channel layout name ("mono", "stereo"); empty: the usual one
};

/// Throws StatusError (NotSupportedByCodec) with a sentence that says which of the three forms are taken, or
/// what is wrong with rate (8000 to 192000) or layout.
void checkSampleFormat(const SampleFormat& format);

}  // namespace Morvane::Worker
