#include "host/images/ImageSequence.h"

#include <fmt/format.h>

#include <filesystem>

#include "host/images/NameMatch.h"
#include "host/images/SequencePattern.h"
#include "host/images/StereoName.h"

namespace Corvel {
namespace {

class ImageFrameReader : public FrameReader {
public:
    ImageFrameReader(const ImageSequence& frames, const Kex::Image::LUT* meaning, const PictureChoice& choice)
        : sequence(frames), curve(meaning), images(createImageReader(choice)) {}

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

// The input's name with its view in it. From then on the files themselves need not know of views.
std::string findView(const std::string& given, PictureChoice& choice) {
    std::string resolved = pathOfView(given, choice);
    if (resolved == given) {
        return given;
    }
    choice.view = choice.view.empty() ? usualView : choice.view;
    choice.viewIsInName = true;
    if (choice.view.find_first_of("/%#@") != std::string::npos) {
        throw NoSuchInput(fmt::format("{} is no name of a view", inQuotes(choice.view)));
    }
    return resolved;
}

// Where one view has no files, whether the other one has.
std::string otherViewText(const std::string& given, const PictureChoice& choice) {
    if (!choice.viewIsInName) {
        return "";
    }
    const std::string other = choice.view == "right" ? "left" : "right";
    const std::string path = withView(given, other);
    const std::optional<SequencePattern> pattern = SequencePattern::parse(path);
    std::error_code error;
    const bool there = pattern ? !pattern->findFiles().empty() : std::filesystem::exists(path, error);
    return there ? fmt::format(", but there is {}; --stereo-view {} reads that", path, other) : "";
}

}  // namespace

ImageSequence::ImageSequence(const std::string& given, const Kex::Image::LUT* meaning, PictureChoice wanted)
    : curve(meaning), choice(std::move(wanted)) {
    std::error_code error;
    const std::string input = findView(given, choice);
    if (std::filesystem::is_directory(input, error)) {
        throw NoSuchInput(
            fmt::format("{} is a folder; name its files, such as {}/shot.####.exr", input, input));
    }
    if (std::filesystem::exists(input, error)) {
        still = input;
        numbers = {1};
        return;
    }
    try {
        files = filesOf(input);
    } catch (const NoSuchInput& reason) {
        throw NoSuchInput(reason.what() + otherViewText(given, choice));
    }
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
    return createImageReader(choice)->readHeader(nameOf(number));
}

std::unique_ptr<FrameReader> ImageSequence::createReader() const {
    return std::make_unique<ImageFrameReader>(*this, curve, choice);
}

}  // namespace Corvel
