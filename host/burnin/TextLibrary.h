#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Corvel {

/// How a text is drawn.
struct TextStyle {
    std::string family;  ///< names of font families, the first one that is there counts: "Noto Sans,Arial"
    double size = 0;     ///< height of the font, pixels
    bool bold = false;
    double pixelAspect = 1;  ///< width of a pixel divided by its height: letters keep their shape as seen
    int widest = 0;          ///< pixels; a longer text is shortened in its middle. 0 for any length

    bool operator==(const TextStyle&) const = default;
};

/// How much of each pixel of a rectangle something covers: width x height bytes, 255 for all of it, top row
/// first. A line of text is as high as its font, whatever its letters.
struct Coverage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> samples;
};

/// A text as it was drawn, and what its font could not do.
struct DrawnText {
    Coverage coverage;
    std::string otherFamily;  ///< the family that was used instead, where none of those asked for is there
    std::string borrowed;     ///< letters that came from another family than the first one that is there
    std::string lacking;      ///< letters that no font has; boxes stand for them
};

/// Shapes and draws single lines of text, in any writing that the installed fonts have. Keeps fonts; one
/// thread.
class TextDrawer {
public:
    virtual ~TextDrawer() = default;

    /// `text` is UTF-8; what is not is drawn as replacement characters, line ends as blanks. An empty text
    /// has no width. Throws std::runtime_error where there is no font at all, and std::bad_alloc.
    virtual DrawnText draw(const std::string& text, const TextStyle& style) = 0;
};

/// The library that draws text. It brings two dozen shared libraries along and is only needed where something
/// is written into pictures; so it is a shared library of its own that is loaded by the first of them.
class TextLibrary {
public:
    virtual ~TextLibrary() = default;

    virtual std::unique_ptr<TextDrawer> createDrawer() const = 0;
};

/// Loads it at the first call and keeps it until the process ends. Any thread. Throws std::runtime_error with
/// the loader's reason.
const TextLibrary& textLibrary();

/// The one symbol of the shared library: a function of type TextLibraryEntry.
using TextLibraryEntry = const TextLibrary* (*)();
constexpr const char* textLibraryEntryName = "corvelTextLibrary";

}  // namespace Corvel
