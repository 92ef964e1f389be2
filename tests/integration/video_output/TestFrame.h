#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Morvane::Testing {

/// A picture of bytes, width x height x 3, RGB, top row first.
struct Bytes {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> samples;

    const std::uint8_t* pixel(int x, int y) const {
        return &samples[(static_cast<std::size_t>(y) * width + x) * 3];
    }
};

/// A frame as a host sends it: width x height x 4 floats, RGBA, top row first.
struct TestFrame {
    int width;
    int height;
    std::vector<float> samples;

    const char* bytes() const { return reinterpret_cast<const char*>(samples.data()); }
    const float* pixel(int x, int y) const { return &samples[(static_cast<std::size_t>(y) * width + x) * 4]; }

    /// Eight colour bars above, a grey ramp in the middle, below a pattern in which no two neighbours are
    /// alike. The alpha is half everywhere, which must not matter.
    static TestFrame bars(int width, int height);

    /// One colour.
    static TestFrame flat(int width, int height, float red, float green, float blue);
};

/// The largest difference, in code values, between the frame and the part of `picture` whose first pixel is
/// `left`, `top`.
int largestDifference(const TestFrame& frame, const Bytes& picture, int left, int top);

}  // namespace Morvane::Testing
