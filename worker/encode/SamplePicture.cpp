#include "worker/encode/SamplePicture.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Morvane::Worker {

namespace {

float hashed(std::int32_t x, std::int32_t y, std::uint32_t seed) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x8da6b343U +
                      static_cast<std::uint32_t>(y) * 0xd8163841U + seed * 0xcb1ab31fU;
    h ^= h >> 15;
    h *= 0x2c1b3c6dU;
    h ^= h >> 12;
    h *= 0x297a2d39U;
    h ^= h >> 15;
    return static_cast<float>(h >> 8) / 8388608.0F - 1.0F;
}

/// Noise of one octave: smooth between whole numbers.
float octave(float x, float y, std::uint32_t seed) {
    const float left = std::floor(x);
    const float top = std::floor(y);
    const auto column = static_cast<std::int32_t>(left);
    const auto row = static_cast<std::int32_t>(top);
    const auto smooth = [](float t) { return t * t * (3 - 2 * t); };
    const float across = smooth(x - left);
    const float down = smooth(y - top);
    const float upper = std::lerp(hashed(column, row, seed), hashed(column + 1, row, seed), across);
    const float lower = std::lerp(hashed(column, row + 1, seed), hashed(column + 1, row + 1, seed), across);
    return std::lerp(upper, lower, down);
}

float texture(float x, float y, int octaves, std::uint32_t seed) {
    float sum = 0;
    float size = 96;
    float strength = 0.5F;
    for (int i = 0; i < octaves; ++i, size /= 2, strength /= 1.9F)
        sum += strength * octave(x / size, y / size, seed + i);
    return sum;
}

}  // namespace

std::vector<float> naturalPicture(int width, int height, int frame, bool alpha) {
    std::vector<float> pixels(static_cast<std::size_t>(width) * height * 4);
    const float radius = 0.4F * static_cast<float>(std::min(width, height));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const float u = static_cast<float>(x + 2 * frame);
            const float v = static_cast<float>(y);
            const float light =
                0.45F + 0.35F * texture(u, v, 6, 1) + (std::fmod(u + v, 64) < 32 ? 0.08F : 0.0F);
            const float warm = 0.18F * texture(u, v, 3, 50);
            const float cool = 0.18F * texture(u, v, 3, 90);
            const float grain = 0.008F * hashed(x, y, 1000 + frame);
            const float distance =
                std::hypot(static_cast<float>(x) - 0.5F * width, static_cast<float>(y) - 0.5F * height);
            const float cover = alpha ? std::clamp((radius - distance) / 8 + 0.5F, 0.0F, 1.0F) : 1.0F;
            float* pixel = &pixels[4 * (static_cast<std::size_t>(y) * width + x)];
            pixel[0] = cover * std::clamp(light + warm + grain, 0.0F, 1.0F);
            pixel[1] = cover * std::clamp(light - 0.3F * warm - 0.3F * cool + grain, 0.0F, 1.0F);
            pixel[2] = cover * std::clamp(light + cool + grain, 0.0F, 1.0F);
            pixel[3] = cover;
        }
    return pixels;
}

}  // namespace Morvane::Worker
