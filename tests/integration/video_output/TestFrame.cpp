#include "TestFrame.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace Morvane::Testing {

namespace {

constexpr float barColours[8][3] = {{0.75F, 0.75F, 0.75F}, {0.75F, 0.75F, 0.0F}, {0.0F, 0.75F, 0.75F},
                                    {0.0F, 0.75F, 0.0F},   {0.75F, 0.0F, 0.75F}, {0.75F, 0.0F, 0.0F},
                                    {0.0F, 0.0F, 0.75F},   {0.1F, 0.5F, 0.9F}};

void colourAt(int x, int y, int width, int height, float* rgb) {
    if (y < height / 2) {
        std::copy_n(barColours[x * 8 / width], 3, rgb);
    } else if (y < height * 3 / 4) {
        std::fill_n(rgb, 3, static_cast<float>(x) / static_cast<float>(width - 1));
    } else {
        rgb[0] = static_cast<float>((x * 7 + y * 13) % 256) / 255.0F;
        rgb[1] = static_cast<float>((x * 31 + y * 3) % 256) / 255.0F;
        rgb[2] = static_cast<float>((x * 5 + y * 57) % 256) / 255.0F;
    }
}

}  // namespace

TestFrame TestFrame::bars(int width, int height) {
    TestFrame frame{width, height, std::vector<float>(static_cast<std::size_t>(width) * height * 4, 0.5F)};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            colourAt(x, y, width, height, &frame.samples[(static_cast<std::size_t>(y) * width + x) * 4]);
    return frame;
}

TestFrame TestFrame::flat(int width, int height, float red, float green, float blue) {
    TestFrame frame{width, height, {}};
    for (int pixel = 0; pixel < width * height; ++pixel)
        frame.samples.insert(frame.samples.end(), {red, green, blue, 1.0F});
    return frame;
}

int largestDifference(const TestFrame& frame, const Bytes& picture, int left, int top) {
    int largest = 0;
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            const float* sent = frame.pixel(x, y);
            const std::uint8_t* seen = picture.pixel(left + x, top + y);
            for (int channel = 0; channel < 3; ++channel) {
                const int code = static_cast<int>(std::lround(sent[channel] * 255.0F));
                largest = std::max(largest, std::abs(code - seen[channel]));
            }
        }
    }
    return largest;
}

}  // namespace Morvane::Testing
