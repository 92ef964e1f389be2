#pragma once

#include <cstdint>
#include <fstream>
#include <string>

/// A QuickTime movie of uncompressed frames, 8 bits, RGB ("raw "), written from front to back: the media data
/// first, the index last. Atoms and fields are those of the QuickTime File Format.
class RawMovie {
public:
    /// Creates the file. `isOpen` tells whether it worked.
    RawMovie(const std::string& path, std::int32_t pixelsWide, std::int32_t pixelsHigh,
             float framesPerSecond);

    bool isOpen() const { return file.is_open(); }

    /// Bytes of a frame as `add` takes it.
    std::uint64_t frameBytes() const { return std::uint64_t{16} * width * height; }

    /// Appends a frame: `width x height x 4` floats, RGBA, top row first; alpha is dropped. False when it
    /// could not be written.
    bool add(const float* rgba);

    /// Writes the index and closes the file. False when it could not be written.
    bool close();

private:
    std::string index() const;

    std::ofstream file;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t timeScale;  ///< ticks a second; a frame lasts 1000
    std::uint32_t frames = 0;
};
