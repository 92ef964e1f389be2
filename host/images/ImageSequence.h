#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/images/FrameSource.h"

namespace Corvel {

/// Image files as a source of frames: those that match a pattern (see SequencePattern), or one still, which
/// is frame 1 and stands for any other frame as well. A file whose very name looks like a pattern is a still.
class ImageSequence : public FrameSource {
public:
    /// Looks what is there; opens no file. `meaning` is what the stored values mean, null for each file's own
    /// statement; it must outlive the source. `choice` is the picture in each file; its view, or left, is the
    /// one whose files are read where the input has a mark for it (see StereoName.h). Throws NoSuchInput.
    ImageSequence(const std::string& input, const Kex::Image::LUT* meaning, PictureChoice choice = {});

    const std::vector<int>& frames() const override { return numbers; }
    bool has(int number) const override;
    std::string nameOf(int number) const override;
    PictureHeader header(int number) const override;
    std::unique_ptr<FrameReader> createReader() const override;

private:
    const Kex::Image::LUT* curve;
    PictureChoice choice;
    std::optional<std::string> still;
    std::map<int, std::string> files;
    std::vector<int> numbers;
};

}  // namespace Corvel
