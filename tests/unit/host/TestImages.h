#pragma once

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace Corvel {

/// Writes an image whose samples (interleaved floats of `spec`'s data window) the library converts to the
/// file's type.
inline void writeImage(const std::string& path, const OIIO::ImageSpec& spec,
                       const std::vector<float>& samples) {
    ASSERT_EQ(samples.size(), spec.image_pixels() * static_cast<std::size_t>(spec.nchannels));
    const auto output = OIIO::ImageOutput::create(path);
    ASSERT_TRUE(output) << OIIO::geterror();
    ASSERT_TRUE(output->open(path, spec)) << output->geterror();
    ASSERT_TRUE(output->write_image(OIIO::TypeFloat, samples.data())) << output->geterror();
    ASSERT_TRUE(output->close()) << output->geterror();
}

/// Pixels of one colour.
inline std::vector<float> plainPixels(const OIIO::ImageSpec& spec, const std::vector<float>& pixel) {
    std::vector<float> samples;
    for (OIIO::imagesize_t i = 0; i < spec.image_pixels(); ++i) {
        samples.insert(samples.end(), pixel.begin(), pixel.end());
    }
    return samples;
}

/// Pixels that a compressor cannot make small, each in 0 to 1.
inline std::vector<float> noisePixels(const OIIO::ImageSpec& spec) {
    std::vector<float> samples(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels));
    unsigned state = 1;
    for (float& sample : samples) {
        state = state * 1664525u + 1013904223u;
        sample = static_cast<float>(state >> 8) / 16777216.0f;
    }
    return samples;
}

inline std::string bytesOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void writeBytes(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

inline void cutShort(const std::string& path, double fraction) {
    const auto size = static_cast<double>(std::filesystem::file_size(path));
    std::filesystem::resize_file(path, static_cast<std::uintmax_t>(size * fraction));
}

}  // namespace Corvel
