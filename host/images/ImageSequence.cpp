#include "host/images/ImageSequence.h"

#include <fmt/format.h>

#include <filesystem>

#include "host/images/SequencePattern.h"

namespace Corvel {
namespace {

class ImageFrameReader : public FrameReader {
public:
    ImageFrameReader(const ImageSequence& frames, const Kex::Image::LUT* meaning)
        : sequence(frames), curve(meaning), images(createImageReader()) {}

    PictureHeader read(int number, Picture& picture) override {
        return images->read(sequence.nameOf(number), curve, picture);
    }

private:
    const ImageSequence& sequence;
    const Kex::Image::LUT* curve;
    const std::unique_ptr<ImageReader> images;
};

std::map<int, std::string> filesOf(const std::string& input) {
    const std::optional<SequencePattern> pattern = SequencePattern::parse(input);
    if (!pattern) {
        throw NoSuchInput(fmt::format("there is no file {}", input));
    }
    std::error_code error;
    if (!std::filesystem::is_directory(pattern->folder(), error)) {
        throw NoSuchInput(fmt::format("there is no folder {}", pattern->folder()));
    }
    std::map<int, std::string> files = pattern->findFiles();
    if (files.empty()) {
        throw NoSuchInput(fmt::format("no file matches {}", input));
    }
    return files;
}

}  // namespace

ImageSequence::ImageSequence(const std::string& input, const Kex::Image::LUT* meaning) : curve(meaning) {
    std::error_code error;
    if (std::filesystem::is_directory(input, error)) {
        throw NoSuchInput(
            fmt::format("{} is a folder; name its files, such as {}/shot.####.exr", input, input));
    }
    if (std::filesystem::exists(input, error)) {
        still = input;
        numbers = {1};
        return;
    }
    files = filesOf(input);
    for (const auto& [number, path] : files) {
        numbers.push_back(number);
    }
}

bool ImageSequence::has(int number) const {
    return still || files.count(number) != 0;
}

std::string ImageSequence::nameOf(int number) const {
    return still ? *still : files.at(number);
}

PictureHeader ImageSequence::header(int number) const {
    return createImageReader()->readHeader(nameOf(number));
}

std::unique_ptr<FrameReader> ImageSequence::createReader() const {
    return std::make_unique<ImageFrameReader>(*this, curve);
}

}  // namespace Corvel
