// Renders the example sequence: a beach ball that bounces across the picture, over transparency.
//
// The same program on the same machine type writes the same pixels: there is no random number in it. Every
// pixel is the mean of 64 rays, one for each cell of an 8 x 8 grid and each at its own moment of a half-frame
// shutter, so that edges and motion are soft and the picture still compresses well.
//
// Pictures are linear light, premultiplied: the ball is opaque and brighter than 1 in its highlights; its
// shadow on the invisible floor is black with alpha, and the floor mirrors the ball a little.
//
// Usage: MakeBall FOLDER    writes FOLDER/ball.1001.exr to ball.1048.exr and FOLDER/ball.wav

#include <OpenImageIO/imageio.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr int pictureWidth = 640;   // pixels
constexpr int pictureHeight = 360;  // pixels
constexpr int frameCount = 48;
constexpr int firstFrame = 1001;
constexpr int framesPerSecond = 24;
constexpr int sampleRate = 48000;  // sample frames a second
constexpr int gridSize = 8;        // rays along one side of a pixel

struct Vector {
    float x = 0, y = 0, z = 0;
};

Vector operator+(Vector a, Vector b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
Vector operator-(Vector a, Vector b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
Vector operator*(Vector a, Vector b) {
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}
Vector operator*(Vector a, float b) {
    return {a.x * b, a.y * b, a.z * b};
}
Vector operator/(Vector a, Vector b) {
    return {a.x / b.x, a.y / b.y, a.z / b.z};
}
float dot(Vector a, Vector b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
Vector normalise(Vector a) {
    return a * (1.0F / std::sqrt(dot(a, a)));
}
Vector mix(Vector a, Vector b, float t) {
    return a * (1 - t) + b * t;
}

float smoothstep(float low, float high, float x) {
    const float t = std::clamp((x - low) / (high - low), 0.0F, 1.0F);
    return t * t * (3 - 2 * t);
}

struct Ray {
    Vector origin, direction;
};

// One premultiplied sample.
struct Sample {
    Vector colour;
    float alpha = 0;
};

Sample over(Sample front, Sample back) {
    return {front.colour + back.colour * (1 - front.alpha), front.alpha + back.alpha * (1 - front.alpha)};
}

// Scene lengths: the ball's radius at rest is 0.8; y is up, z away from the camera, the floor at y = 0.
constexpr float radius = 0.8F;
const Vector keyLight = normalise({-0.55F, 0.9F, -0.6F});

// The bounce. Impacts at frames 8, 24 and 40 of the sequence, counted from 0.
constexpr float bouncePeriod = 16;  // frames
constexpr float firstImpact = 8;    // frames
constexpr float bounceHeight = 1.6F;

struct Ball {
    Vector centre, scale;  // scale: the half axes of the squashed ball
    float turn = 0;        // radians about z, as if it rolled
};

Ball ballAt(float frame) {
    const float phase = std::fmod(frame - firstImpact + 4 * bouncePeriod, bouncePeriod) / bouncePeriod;
    const float height = bounceHeight * 4 * phase * (1 - phase);
    const float speed = std::abs(1 - 2 * phase);
    const float sinceImpact = std::min(phase, 1 - phase) * bouncePeriod;  // frames
    const float squash = 0.34F * std::exp(-sinceImpact * sinceImpact / 0.9F);
    const float tall = (1 - squash) * (1 + 0.07F * speed * speed * (1 - std::exp(-sinceImpact)));
    const float wide = 1 / std::sqrt(tall);
    const float x = -2.9F + 5.8F * frame / (frameCount - 1);
    return {{x, height + radius * tall, 0}, {radius * wide, radius * tall, radius * wide}, -x * 0.9F};
}

// What the ball mirrors: a sky that fades to a warm floor, one large soft box as the key, one narrow as the
// rim.
Vector environment(Vector d) {
    Vector colour = mix({0.16F, 0.13F, 0.11F}, {0.34F, 0.44F, 0.62F}, smoothstep(-0.25F, 0.5F, d.y));
    const float key = smoothstep(0.86F, 0.92F, dot(d, keyLight));
    const float bars = std::max(smoothstep(0.012F, 0.004F, std::abs(d.x + 0.52F)),
                                smoothstep(0.012F, 0.004F, std::abs(d.y - 0.84F * keyLight.y - 0.1F)));
    colour = colour + Vector{9, 8.6F, 8} * (key * (1 - 0.85F * bars));
    const float rim = smoothstep(0.93F, 0.97F, dot(d, normalise({0.9F, 0.25F, 0.35F})));
    return colour + Vector{2.2F, 2.9F, 4.2F} * rim;
}

// Six panels about the ball's own axis, a cap at each pole, a dark seam between.
Vector panelColour(Vector n) {
    static const std::array<Vector, 3> palette = {
        {{0.82F, 0.09F, 0.04F}, {0.03F, 0.27F, 0.42F}, {0.93F, 0.5F, 0.04F}}};
    const Vector cream = {0.86F, 0.8F, 0.66F};
    const float pole = std::abs(n.z);
    const float angle = (std::atan2(n.y, n.x) / 6.2831853F + 1) * 6;  // in panels
    const auto panel = static_cast<int>(angle) % 6;
    Vector colour = panel % 2 == 0 ? cream : palette[static_cast<size_t>(panel / 2)];
    const float fromSeam = std::abs(angle - std::round(angle)) * std::sqrt(1 - std::min(pole * pole, 0.99F));
    colour = colour * (0.35F + 0.65F * smoothstep(0.008F, 0.035F, fromSeam));
    colour = mix(colour, {0.86F, 0.8F, 0.66F}, smoothstep(0.935F, 0.942F, pole));
    return colour * (0.35F + 0.65F * smoothstep(0.006F, 0.018F, std::abs(pole - 0.9385F)));
}

Vector shade(const Ball& ball, Vector point, Vector normal, Vector view) {
    const Vector local = (point - ball.centre) / ball.scale;
    const float c = std::cos(ball.turn);
    const float s = std::sin(ball.turn);
    // Tilted towards the camera, so that a pole comes into sight.
    const Vector turned = {c * local.x + s * local.y, c * local.y - s * local.x, local.z};
    const Vector tilted = {turned.x, 0.89F * turned.y + 0.45F * turned.z,
                           0.89F * turned.z - 0.45F * turned.y};

    const float key = std::max(0.0F, (dot(normal, keyLight) + 0.15F) / 1.15F);
    const float sky = 0.5F + 0.5F * normal.y;
    const float nearFloor = std::exp(-1.4F * std::max(0.0F, point.y));
    const Vector light = Vector{1.25F, 1.16F, 1.02F} * key + Vector{0.22F, 0.28F, 0.38F} * sky +
                         Vector{0.2F, 0.15F, 0.12F} * ((1 - sky) * (1 - 0.6F * nearFloor));
    const Vector mirror = view - normal * (2 * dot(view, normal));
    const float facing = std::clamp(-dot(view, normal), 0.0F, 1.0F);
    const float fresnel = 0.045F + 0.955F * std::pow(1 - facing, 5.0F);
    return panelColour(tilted) * light * (1 - fresnel) + environment(mirror) * std::min(fresnel, 0.7F);
}

std::optional<Sample> hitBall(const Ball& ball, const Ray& ray) {
    const Vector o = (ray.origin - ball.centre) / ball.scale;
    const Vector d = ray.direction / ball.scale;
    const float a = dot(d, d);
    const float b = dot(o, d);
    const float discriminant = b * b - a * (dot(o, o) - 1);
    if (discriminant < 0) {
        return std::nullopt;
    }
    const float distance = (-b - std::sqrt(discriminant)) / a;
    const Vector point = ray.origin + ray.direction * distance;
    const Vector normal = normalise((point - ball.centre) / (ball.scale * ball.scale));
    return Sample{shade(ball, point, normal, ray.direction), 1};
}

// How much of the light is kept from a point of the floor: the key light's soft shadow, and what the ball
// covers of the sky.
float shadowAt(const Ball& ball, Vector point) {
    const Vector toBall = ball.centre - point;
    const float distance = std::sqrt(dot(toBall, toBall));
    const float size = std::min(1.0F, (ball.scale.x + ball.scale.y) / 2 / distance);
    const float ballAngle = std::asin(size);
    const float lightAngle = 0.16F;  // half the light's angular width, radians
    const float apart = std::acos(std::clamp(dot(toBall, keyLight) / distance, -1.0F, 1.0F));
    const float key = smoothstep(ballAngle + lightAngle, std::max(0.0F, ballAngle - lightAngle), apart);
    const float sky = std::clamp(toBall.y / distance, 0.0F, 1.0F) * size * size;
    return std::min(0.92F, 1 - (1 - 0.5F * key) * (1 - 0.75F * sky));
}

std::optional<Sample> hitFloor(const Ball& ball, const Ray& ray) {
    if (ray.direction.y >= -1e-4F) {
        return std::nullopt;
    }
    const Vector point = ray.origin + ray.direction * (-ray.origin.y / ray.direction.y);
    Sample floor = {{}, shadowAt(ball, point)};
    const Ray mirrored = {point, {ray.direction.x, -ray.direction.y, ray.direction.z}};
    if (auto reflection = hitBall(ball, mirrored)) {
        const float strength = 0.16F * std::exp(-0.55F * (ball.centre.y - ball.scale.y));
        floor = over({reflection->colour * strength, strength}, floor);
    }
    return floor.alpha > 0.004F ? std::optional(floor) : std::nullopt;
}

Sample trace(const Ball& ball, const Ray& ray) {
    if (auto hit = hitBall(ball, ray)) {
        return *hit;
    }
    return hitFloor(ball, ray).value_or(Sample{});
}

Ray cameraRay(float x, float y) {
    const float scale = 4.35F / pictureHeight;
    const Vector origin = {0, 1.75F, -9};
    const Vector target = {(x - pictureWidth / 2.0F) * scale, (pictureHeight / 2.0F - y) * scale + 1.72F, 0};
    return {origin, normalise(target - origin)};
}

// width x height x 4 floats, RGBA premultiplied, top row first.
std::vector<float> render(int frame) {
    constexpr int rayCount = gridSize * gridSize;
    std::array<Ball, rayCount> moments;
    for (int i = 0; i < rayCount; ++i) {
        // 37 is odd, so it visits all 64 moments, neighbours in the grid far apart in time.
        moments[static_cast<size_t>(i)] =
            ballAt(static_cast<float>(frame) + 0.5F * static_cast<float>(i * 37 % rayCount) / rayCount);
    }
    std::vector<float> pixels;
    pixels.reserve(size_t{4} * pictureWidth * pictureHeight);
    for (int y = 0; y < pictureHeight; ++y) {
        for (int x = 0; x < pictureWidth; ++x) {
            Sample sum;
            for (int i = 0; i < rayCount; ++i) {
                const float dx = (static_cast<float>(i % gridSize) + 0.5F) / gridSize;
                const float dy = (static_cast<float>(i / gridSize) + 0.5F) / gridSize;
                const Sample sample =
                    trace(moments[static_cast<size_t>(i)],
                          cameraRay(static_cast<float>(x) + dx, static_cast<float>(y) + dy));
                sum.colour = sum.colour + sample.colour;
                sum.alpha += sample.alpha;
            }
            constexpr float weight = 1.0F / rayCount;
            pixels.insert(pixels.end(), {sum.colour.x * weight, sum.colour.y * weight, sum.colour.z * weight,
                                         sum.alpha * weight});
        }
    }
    return pixels;
}

// The SMPTE word: binary-coded decimal, frames in the lowest byte, then seconds, minutes, hours.
std::array<uint32_t, 2> timeCode(int frame) {
    const auto bcd = [](int value) { return static_cast<uint32_t>(value / 10 * 16 + value % 10); };
    const int seconds = frame / framesPerSecond;
    return {bcd(frame % framesPerSecond) | bcd(seconds % 60) << 8 | bcd(seconds / 60 % 60) << 16 |
                bcd(1 + seconds / 3600) << 24,
            0};
}

bool writePicture(const std::string& path, int frame, const std::vector<float>& pixels) {
    OIIO::ImageSpec layout(pictureWidth, pictureHeight, 4, OIIO::TypeDesc::HALF);
    layout.channelnames = {"R", "G", "B", "A"};
    layout.alpha_channel = 3;
    layout.attribute("compression", "zip");
    const auto code = timeCode(frame);
    layout.attribute("smpte:TimeCode", OIIO::TypeTimeCode, code.data());
    const std::array<int, 2> rate = {framesPerSecond, 1};
    layout.attribute("FramesPerSecond", OIIO::TypeRational, rate.data());
    layout.attribute("reelName", "A001_BALL");
    layout.attribute("Software", "examples/MakeBall");
    // A date of the day would make every run's files differ.
    layout.attribute("DateTime", "2024:01:01 00:00:00");
    auto output = OIIO::ImageOutput::create(path);
    return output && output->open(path, layout) &&
           output->write_image(OIIO::TypeDesc::FLOAT, pixels.data()) && output->close();
}

// Stereo, 16-bit: a dull thump with a little rubber in it at each impact, panned to where the ball is.
std::vector<int16_t> renderSound() {
    constexpr int count = sampleRate * frameCount / framesPerSecond;  // sample frames
    std::vector<int16_t> samples(size_t{2} * count);
    for (int i = 0; i < count; ++i) {
        double left = 0;
        double right = 0;
        for (double impact = firstImpact; impact < frameCount; impact += bouncePeriod) {
            const double t = static_cast<double>(i) / sampleRate - impact / framesPerSecond;
            if (t < 0) {
                continue;
            }
            const double thump =
                std::sin(6.2831853 * (92 * t + 3.2 * (1 - std::exp(-t * 38)))) * std::exp(-t * 13);
            const double slap = std::sin(6.2831853 * 743 * t) * std::exp(-t * 95) * 0.35;
            const double ring = std::sin(6.2831853 * 311 * t) * std::exp(-t * 24) * 0.16;
            const double attack = 1 - std::exp(-t * 2500);
            const double pan = impact / frameCount;
            left += (thump + slap + ring) * attack * std::cos(pan * 1.5708);
            right += (thump + slap + ring) * attack * std::sin(pan * 1.5708);
        }
        samples[size_t{2} * static_cast<size_t>(i)] = static_cast<int16_t>(std::lround(20000 * left));
        samples[size_t{2} * static_cast<size_t>(i) + 1] = static_cast<int16_t>(std::lround(20000 * right));
    }
    return samples;
}

bool writeSound(const std::string& path, const std::vector<int16_t>& samples) {
    std::ofstream file(path, std::ios::binary);
    const auto number = [&file](uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) {
            file.put(static_cast<char>(value >> (8 * i) & 0xFF));
        }
    };
    const auto dataSize = static_cast<uint32_t>(samples.size() * 2);  // bytes
    file << "RIFF";
    number(36 + dataSize, 4);
    file << "WAVEfmt ";
    number(16, 4);
    number(1, 2);  // PCM
    number(2, 2);  // channels
    number(sampleRate, 4);
    number(sampleRate * 4, 4);
    number(4, 2);
    number(16, 2);
    file << "data";
    number(dataSize, 4);
    for (const int16_t sample : samples) {
        number(static_cast<uint16_t>(sample), 2);
    }
    return static_cast<bool>(file.flush());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        fmt::print(stderr, "usage: MakeBall FOLDER\n");
        return 2;
    }
    const std::string folder = argv[1];
    for (int frame = 0; frame < frameCount; ++frame) {
        const std::string path = fmt::format("{}/ball.{:04}.exr", folder, firstFrame + frame);
        if (!writePicture(path, frame, render(frame))) {
            fmt::print(stderr, "MakeBall: cannot write {}: {}\n", path, OIIO::geterror());
            return 1;
        }
    }
    if (!writeSound(folder + "/ball.wav", renderSound())) {
        fmt::print(stderr, "MakeBall: cannot write {}/ball.wav\n", folder);
        return 1;
    }
    return 0;
}
