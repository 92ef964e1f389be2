#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/images/FrameSource.h"
#include "host/movies/MovieReader.h"

namespace Corvel {

/// Whether the file is one for the QuickTime helper rather than for the image library: by its ending, as
/// people name movies.
bool isMovieName(const std::string& path);

/// The path of the movie that is meant by `input`, with the chosen view for its mark (see StereoName.h).
/// Throws Failure for any other choice: movies have neither parts nor layers.
std::string moviePath(const std::string& input, const PictureChoice& choice);

/// The frames of a movie, counted from 1. They come out of one helper, which decodes ahead by itself, so that
/// there is one reader at a time.
class MovieSource : public FrameSource {
public:
    /// Opens the movie. `meaning` is the curve of its values, null for sRGB: the host's own curve, so that a
    /// movie that was rendered from a movie keeps its values. Throws as MovieReader.
    MovieSource(const std::string& path, const Kex::Image::LUT* meaning, HelperKeeper& keeper);
    ~MovieSource() override;

    const std::vector<int>& frames() const override { return numbers; }
    bool has(int number) const override { return number >= 1 && number <= movie->facts().frames; }
    std::string nameOf(int number) const override;
    PictureHeader header(int number) const override;
    /// REQUIRES: no other reader of this source is alive.
    std::unique_ptr<FrameReader> createReader() const override;
    unsigned mostReaders() const override { return 1; }

private:
    std::unique_ptr<MovieReader> movie;
    const Kex::Image::LUT& curve;
    PictureHeader header_;
    std::vector<int> numbers;
};

}  // namespace Corvel
