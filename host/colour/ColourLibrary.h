#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "host/colour/ColourRequest.h"
#include "host/colour/DisplayTags.h"
#include "host/images/PictureHeader.h"

namespace Corvel {

/// One transform of colours, ready to be used. Immutable; any number of threads.
class ColourTransform {
public:
    virtual ~ColourTransform() = default;

    /// Changes `count` pixels in place: three rows of `count` floats. `scratch` is the calling thread's own
    /// memory, kept from call to call.
    virtual void apply(float* red, float* green, float* blue, std::size_t count,
                       std::vector<float>& scratch) const = 0;
};

/// From the input's colours to those of the movie, as a request and a configuration settle it. Immutable; any
/// number of threads.
class ColourConversion {
public:
    virtual ~ColourConversion() = default;

    enum class Part {
        Whole,      ///< from the input to the output, in one
        ToLight,    ///< from the input to the configuration's scene-linear space
        FromLight,  ///< from there to the output
    };
    /// Throws Failure.
    virtual std::shared_ptr<const ColourTransform> transform(Part part) const = 0;

    /// The input's space, and what settled it: "ARRI LogC4, by the file's metadata".
    virtual std::string inputText() const = 0;
    /// What a person should know about that: a statement of the file that could not be followed. Usually
    /// empty.
    virtual std::string inputDoubt() const = 0;
    /// The space that the input would be in if that were its first frame's header.
    virtual std::string spaceOf(const PictureHeader& header) const = 0;
    /// The input's space.
    virtual std::string inputSpace() const = 0;
    /// What the pixels are afterwards: a display with its view, or a space.
    virtual std::string outputText() const = 0;
    /// The configuration's file.
    virtual std::string configText() const = 0;
    /// The movie's tags; empty where the output has no name that a tag knows.
    virtual DisplayTags tags() const = 0;
};

/// What is known of the input when its colour space has to be found.
struct ColourInput {
    std::string path;  ///< the input as the person named it
    const PictureHeader& header;
};

/// The colour library (OpenColorIO). It and what it brings along are a shared library of their own, loaded
/// when somebody asks for colour management.
class ColourLibrary {
public:
    virtual ~ColourLibrary() = default;

    /// `configPath` is the file to use; everything in `request` but its `config` counts. Throws Failure: 3
    /// for a configuration that is missing or broken or lacks files, 2 for what is not in it.
    virtual std::shared_ptr<const ColourConversion> openConversion(const std::string& configPath,
                                                                   const ColourRequest& request,
                                                                   const ColourInput& input) const = 0;
};

/// Loads it at the first call and keeps it until the process ends. Any thread. Throws std::runtime_error with
/// the loader's reason.
const ColourLibrary& colourLibrary();

/// The one symbol of the shared library: a function of type ColourLibraryEntry.
using ColourLibraryEntry = const ColourLibrary* (*)();
constexpr const char* colourLibraryEntryName = "corvelColourLibrary";

}  // namespace Corvel
