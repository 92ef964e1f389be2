#pragma once

#include <cstddef>
#include <cstdint>

namespace Morvane::Worker {

/// Turns a row of samples into floats: 0 for nominal black (or transparent), 1 for nominal white (or opaque).
struct SampleScale {
    float black = 0;  ///< sample value
    float range = 1;  ///< sample values between black and white; negative where white is the smaller one

    /// Of samples of `bits` bits from black at 0 to white at 2^bits - 1 or, in video range, from 16 to 235
    /// with the bits above eight added below.
    static SampleScale ofBits(int bits, bool fullRange);

    /// `samples` are of 1, 2 or, floats, 4 bytes; floats are taken as they are.
    void apply(const void* samples, std::size_t sampleBytes, std::size_t count, float* row) const;
};

}  // namespace Morvane::Worker
