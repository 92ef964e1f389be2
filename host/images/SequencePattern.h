#pragma once

#include <map>
#include <optional>
#include <string>

namespace Corvel {

/// The file names of an image sequence, as a person writes them: `shot.%04d.exr`, `shot.####.exr` (each # one
/// digit of padding) or `shot.@@@@.exr` (the same). The frame number stands in the file's name, never in a
/// folder's; where a name has several marks, the last one is the frame number. In the % form, %% is a % of
/// the name.
///
/// A plain value without any open file.
class SequencePattern {
public:
    /// The pattern in that path; nothing when the path has no mark and so names one file.
    static std::optional<SequencePattern> parse(const std::string& path);

    /// The path of one frame, its number padded with zeros. A minus sign counts as a digit, as in printf.
    std::string pathOf(int frame) const;

    /// What is there: every frame that has a file, with that file's path, in ascending order. Reads the
    /// folder once; empty when it cannot be read. A name with more digits than the padding belongs to the
    /// sequence only where the number needs them. Where two files stand for one frame, the one that `pathOf`
    /// names counts.
    std::map<int, std::string> findFiles() const;

    /// The folder in which the files are, never empty.
    const std::string& folder() const { return folder_; }

private:
    SequencePattern() = default;

    std::optional<int> frameOf(const std::string& fileName) const;

    std::string folder_;
    std::string leading;  // the folder as it was written, with its "/", or nothing
    std::string prefix;   // of the file's name
    std::string suffix;
    int padding = 1;  // least number of characters that a frame number takes
};

}  // namespace Corvel
