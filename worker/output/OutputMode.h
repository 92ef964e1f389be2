#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Morvane::Worker {

/// What a device shows: the size of its frames and how many a second. A plain value.
struct OutputMode {
    /// Frames a second as an exact fraction, so that a clock built on it does not drift: 30000/1001.
    struct Rate {
        std::int64_t frames;
        std::int64_t seconds;

        friend bool operator==(const Rate&, const Rate&) = default;
    };

    int width;   ///< pixels
    int height;  ///< pixels
    Rate rate;

    /// The rate as requests and answers carry it, in thousandths rounded to nearest: 29970 for 30000/1001.
    std::int32_t thousandths() const;

    /// For people: "1920 x 1080, 25", "2048 x 1080, 23.976".
    std::string name() const;

    /// Bytes of one frame as the host sends it: width x height x 4 floats.
    std::uint64_t frameBytes() const;

    friend bool operator==(const OutputMode&, const OutputMode&) = default;
};

/// The usual film and video modes, small sizes first and slow rates first, that fit into `maxWidth` x
/// `maxHeight` pixels.
std::vector<OutputMode> standardModes(int maxWidth, int maxHeight);

}  // namespace Morvane::Worker
