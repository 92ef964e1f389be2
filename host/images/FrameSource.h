#pragma once

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/images/ImageReader.h"

namespace Corvel {

/// An input that isn't there, or of which nothing can be read. `what()` is a sentence that names it.
class NoSuchInput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads frames of one source. Used by one thread; each reading thread has its own.
class FrameReader {
public:
    virtual ~FrameReader() = default;

    /// Decodes frame `number`, as ImageReader::read. Throws UnreadableImage.
    virtual PictureHeader read(int number, Picture& picture) = 0;
};

/// What a render reads: an image sequence, one still, and whatever else can give frames by number. Immutable,
/// so that any number of threads may use it; outlives its readers.
class FrameSource {
public:
    virtual ~FrameSource() = default;

    /// The numbers of the frames that are there, ascending, at least one.
    virtual const std::vector<int>& frames() const = 0;
    /// Whether there is such a frame. A still has every frame.
    virtual bool has(int number) const = 0;
    /// What a person would call the frame: the path of its file.
    virtual std::string nameOf(int number) const = 0;
    /// What the frame's header says. Throws UnreadableImage.
    virtual PictureHeader header(int number) const = 0;

    virtual std::unique_ptr<FrameReader> createReader() const = 0;
    /// How many readers may be at work at the same time.
    virtual unsigned mostReaders() const { return std::numeric_limits<unsigned>::max(); }
};

}  // namespace Corvel
