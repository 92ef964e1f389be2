// Makes the picture sequences that whole renders are measured with: a landscape with haze and texture, a pan,
// a turning chart of hard edges, a sun brighter than white, and film grain over it all. No flat colour
// anywhere, since flat colour compresses and encodes like no real footage does.
//
// Deterministic: the same arguments give the same pixels.
//
// Usage: MakeSequence FOLDER FORMAT WIDTH HEIGHT FRAMES [alpha]
//   FORMAT  exr  half float, ZIP, linear light
//           dpx  10 bits, sRGB curve
//           png  16 bits, sRGB curve
//           tif  16 bits, sRGB curve
//   alpha   four channels, premultiplied; the sky is transparent
// Writes FOLDER/frame.0001.FORMAT and so on, on all cores.

#include <OpenImageIO/imageio.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Colour {
    float r = 0, g = 0, b = 0;
};

Colour operator+(Colour a, Colour b) {
    return {a.r + b.r, a.g + b.g, a.b + b.b};
}
Colour operator*(Colour a, float b) {
    return {a.r * b, a.g * b, a.b * b};
}
Colour mix(Colour a, Colour b, float t) {
    return a * (1 - t) + b * t;
}

float smoothstep(float low, float high, float x) {
    const float t = std::clamp((x - low) / (high - low), 0.0F, 1.0F);
    return t * t * (3 - 2 * t);
}

// 0…1 from three numbers, the same everywhere.
float hash(int x, int y, int z) {
    auto h = static_cast<uint32_t>(x) * 0x8DA6B343U ^ static_cast<uint32_t>(y) * 0xD8163841U ^
             static_cast<uint32_t>(z) * 0xCB1AB31FU;
    h = (h ^ h >> 15) * 0x2C1B3C6DU;
    h = (h ^ h >> 12) * 0x297A2D39U;
    return static_cast<float>((h ^ h >> 15) >> 8) / 16777216.0F;
}

float smoothNoise(float x, float y, int seed) {
    const float fx = std::floor(x);
    const float fy = std::floor(y);
    const float tx = smoothstep(0, 1, x - fx);
    const float ty = smoothstep(0, 1, y - fy);
    const int ix = static_cast<int>(fx);
    const int iy = static_cast<int>(fy);
    const float top = hash(ix, iy, seed) * (1 - tx) + hash(ix + 1, iy, seed) * tx;
    const float bottom = hash(ix, iy + 1, seed) * (1 - tx) + hash(ix + 1, iy + 1, seed) * tx;
    return top * (1 - ty) + bottom * ty;
}

// Octaves of noise from the coarse to the fine, each half as strong as the one before; 0…1.
float texture(float x, float y, int octaves, int seed) {
    float sum = 0;
    float weight = 0.5F;
    for (int i = 0; i < octaves; ++i) {
        sum += weight * smoothNoise(x, y, seed + i);
        x = x * 2.03F + 17.1F;
        y = y * 2.03F + 9.7F;
        weight /= 2;
    }
    return sum;
}

struct Sample {
    Colour colour;
    float alpha = 0;
};

// x and y in picture heights, from the top left corner; time in frames. Not premultiplied.
Colour sky(float x, float y) {
    const Colour base = mix({0.1F, 0.2F, 0.46F}, {0.72F, 0.55F, 0.42F}, smoothstep(0, 0.62F, y));
    const float clouds = smoothstep(0.42F, 0.75F, texture(x * 2.2F, y * 5, 6, 400));
    const float toSun = std::hypot(x - 1.22F, y - 0.3F);
    const Colour sun =
        Colour{5, 4.1F, 2.6F} * (smoothstep(0.055F, 0.045F, toSun) + 0.12F * std::exp(-toSun * 7));
    return mix(base, {0.86F, 0.8F, 0.78F}, 0.7F * clouds) + sun;
}

// One ridge: its colour, and how much of the pixel it covers.
Sample ridge(float x, float y, int index, float pixel) {
    const float depth = static_cast<float>(index);  // 0 far, 3 near
    const float height =
        0.5F + 0.12F * depth - (0.34F - 0.05F * depth) * texture(x * (1.3F + depth), 0.5F, 7, 10 * index);
    const float cover = smoothstep(-pixel, pixel, y - height);
    if (cover <= 0) {
        return {};
    }
    const float below = y - height;
    const float rock = texture(x * (14 + 9 * depth), y * (22 + 11 * depth), 7, 100 + 10 * index);
    const float slope = texture(x * 6 + below * 9, y * 3, 4, 200 + index);
    const float light = 0.25F + 1.1F * rock * (0.4F + 0.9F * slope);
    const Colour ground = mix({0.24F, 0.17F, 0.12F}, {0.1F, 0.2F, 0.06F}, smoothstep(0.02F, 0.2F, below));
    const Colour haze = {0.55F, 0.56F, 0.62F};
    return {mix(ground * light, haze, 0.72F - 0.24F * depth), cover};
}

// A turning chart of wedges and rings, finer towards its middle, in two strong colours.
Sample chart(float x, float y, float frame, float pixel) {
    const float dx = x - 0.42F;
    const float dy = y - 0.58F;
    const float distance = std::hypot(dx, dy);
    const float cover = smoothstep(pixel, -pixel, distance - 0.2F);
    if (cover <= 0) {
        return {};
    }
    const float angle = std::atan2(dy, dx) + frame * 0.02F;
    const float edge = pixel / std::max(distance, pixel);
    const float wedges = smoothstep(-9 * edge, 9 * edge, std::sin(angle * 18));
    const float rings = smoothstep(-0.35F, 0.35F, std::sin(distance * 190));
    const Colour colour = distance < 0.11F ? mix({0.02F, 0.02F, 0.02F}, {0.9F, 0.9F, 0.88F}, wedges)
                                           : mix({0.62F, 0.05F, 0.06F}, {0.04F, 0.22F, 0.7F}, rings);
    return {colour * (0.85F + 0.3F * smoothNoise(x * 90, y * 90, 77)), cover};
}

Colour over(Sample front, Colour back) {
    return mix(back, front.colour, front.alpha);
}

// Grain as film has it: a little larger than a pixel, stronger in the mid tones, mostly alike in the three
// layers.
Colour withGrain(Colour colour, int x, int y, int frame) {
    const auto layer = [&](int seed) {
        const float here = hash(x, y, seed) + hash(x, y, seed + 1) + hash(x, y, seed + 2) - 1.5F;
        const float beside = hash(x + 1, y, seed) + hash(x, y + 1, seed) + hash(x + 1, y + 1, seed) - 1.5F;
        return 0.7F * here + 0.4F * beside;
    };
    const float common = layer(1000 + 16 * frame);
    const auto one = [&](float value, int seed) {
        const float strength = 0.055F * std::sqrt(std::max(value, 0.0F)) / (1 + value);
        return std::max(0.0F, value + strength * (0.75F * common + 0.5F * layer(seed)));
    };
    return {one(colour.r, 1004 + 16 * frame), one(colour.g, 1008 + 16 * frame),
            one(colour.b, 1012 + 16 * frame)};
}

struct Request {
    std::string folder, format;
    int width = 0, height = 0, frames = 0;
    bool alpha = false;
};

float curve(float linear) {
    const float v = std::clamp(linear, 0.0F, 1.0F);
    return v <= 0.0031308F ? 12.92F * v : 1.055F * std::pow(v, 1 / 2.4F) - 0.055F;
}

// width x height x 3 or 4 floats, top row first.
std::vector<float> render(const Request& request, int frame) {
    std::vector<float> pixels;
    const float scale = 1.0F / static_cast<float>(request.height);
    const float pan = static_cast<float>(frame) * 0.0035F;
    const bool curved = request.format != "exr";
    pixels.reserve(static_cast<size_t>(request.width) * static_cast<size_t>(request.height) * 4);
    for (int row = 0; row < request.height; ++row) {
        for (int column = 0; column < request.width; ++column) {
            const float x = static_cast<float>(column) * scale;
            const float y = static_cast<float>(row) * scale;
            // Over nothing the layers give premultiplied colours by themselves.
            Colour colour = request.alpha ? Colour{} : sky(x + pan * 0.1F, y);
            float alpha = 0;
            for (int i = 0; i < 4; ++i) {
                const Sample layer = ridge(x + pan * static_cast<float>(1 + 2 * i) / 4, y, i, scale);
                colour = over(layer, colour);
                alpha += layer.alpha * (1 - alpha);
            }
            const Sample front = chart(x, y, static_cast<float>(frame), scale);
            colour = withGrain(over(front, colour), column, row, frame);
            alpha += front.alpha * (1 - alpha);
            for (const float value : {colour.r, colour.g, colour.b}) {
                pixels.push_back(curved ? curve(value) : value);
            }
            if (request.alpha) {
                pixels.push_back(alpha);
            }
        }
    }
    return pixels;
}

bool write(const Request& request, int frame) {
    const std::string path = fmt::format("{}/frame.{:04}.{}", request.folder, frame, request.format);
    OIIO::ImageSpec layout(request.width, request.height, request.alpha ? 4 : 3,
                           request.format == "exr" ? OIIO::TypeDesc::HALF : OIIO::TypeDesc::UINT16);
    if (request.format == "exr") {
        layout.attribute("compression", "zip");
    } else {
        layout.attribute("oiio:ColorSpace", "sRGB");
    }
    if (request.format == "dpx") {
        layout.attribute("oiio:BitsPerSample", 10);
    }
    const std::vector<float> pixels = render(request, frame);
    auto output = OIIO::ImageOutput::create(path);
    return output && output->open(path, layout) &&
           output->write_image(OIIO::TypeDesc::FLOAT, pixels.data()) && output->close();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 6) {
        fmt::print(stderr, "usage: MakeSequence FOLDER exr|dpx|png|tif WIDTH HEIGHT FRAMES [alpha]\n");
        return 2;
    }
    const Request request = {argv[1], argv[2], std::atoi(argv[3]), std::atoi(argv[4]), std::atoi(argv[5]),
                             argc > 6};
    OIIO::attribute("threads", 1);
    std::atomic<int> next = 1;
    std::atomic<bool> failed = false;
    const auto work = [&] {
        for (int frame = next++; frame <= request.frames && !failed; frame = next++) {
            if (!write(request, frame)) {
                fmt::print(stderr, "MakeSequence: cannot write frame {}: {}\n", frame, OIIO::geterror());
                failed = true;
            }
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i) {
        threads.emplace_back(work);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return failed ? 1 : 0;
}
