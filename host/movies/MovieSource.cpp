#include "host/movies/MovieSource.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <numeric>

#include "Kex/Image/LUT.h"
#include "host/images/NameMatch.h"
#include "host/images/PlacePixels.h"
#include "host/images/StereoName.h"
#include "host/movies/RunningTimecode.h"
#include "host/render/Failure.h"
#include "platform/LargeMemory.h"

namespace Corvel {
namespace {

using Kex::Image::LUT;

constexpr int srgb = 6;

// The header of one frame: that of the first with its own time code.
PictureHeader headerOfFrame(PictureHeader header, const MovieFacts& facts, int number) {
    const auto timecode = header.metadata.find("input/timecode");
    if (timecode != header.metadata.end()) {
        timecode->second = timecodeAfter(timecode->second, number - 1, facts.timecodeRate());
    }
    return header;
}

class MovieFrames : public FrameReader {
public:
    MovieFrames(MovieReader& source, const PictureHeader& all, const LUT& meaning)
        : movie(source), header(all), curve(meaning) {
        const std::size_t pixels =
            static_cast<std::size_t>(movie.facts().width) * static_cast<std::size_t>(movie.facts().height);
        memory = Morvane::Platform::allocateLarge(pixels * 4 * sizeof(float));
    }

    PictureHeader read(int number, Picture& picture) override {
        const MovieFacts& facts = movie.facts();
        auto* const samples = reinterpret_cast<float*>(memory.get());
        movie.readFrame(number - 1, samples);
        const InterleavedPixels pixels{
            .samples = samples,
            .window = header.data,
            .channels = 4,
            .layout = {0, 1, 2, header.hasAlpha ? 3 : -1},
            .straightAlpha = facts.text("quicktime/alpha") == "straight",
            .curve = curve,
        };
        picture.reset(facts.width, facts.height, header.hasAlpha ? 4 : 3);
        placePixels(pixels, header.display, picture);
        return headerOfFrame(header, facts, number);
    }

private:
    MovieReader& movie;
    const PictureHeader& header;
    const LUT& curve;
    Morvane::Platform::LargeMemory memory;  // RGBA floats as the movie stores them
};

// What the track that frames are read from says about its colours; it is the one with a number of frames.
void addColours(MovieReader& movie, PictureHeader& header) {
    std::map<std::string, std::string> properties;
    std::string track;
    for (const auto& [name, value] : movie.properties()) {
        properties[name] = value;
        const std::size_t end = name.rfind("/frames");
        track = end != std::string::npos && end + 7 == name.size() ? name.substr(0, end) : track;
    }
    header.primaries = properties[track + "/primaries"];
    header.transfer = properties[track + "/transfer"];
}

PictureHeader headerOf(const MovieFacts& facts) {
    PictureHeader header;
    header.display = {0, 0, facts.width, facts.height};
    header.data = header.display;
    header.pixelAspect = facts.pixelAspect();
    header.hasAlpha = facts.channels == 4;
    header.bits = facts.bits;
    header.curve = LUT::getLut(srgb)->name();
    for (const char* key : {"input/timecode", "quicktime/timecode_rate", "quicktime/reel"}) {
        if (const std::string text = facts.text(key); !text.empty()) {
            header.metadata[key] = text;
        }
    }
    header.metadata["input/frame_rate"] = fmt::format("{:.6g}", facts.rate);
    return header;
}

}  // namespace

bool isMovieName(const std::string& path) {
    const std::string ending = lowered(std::filesystem::path(path).extension().string());
    constexpr std::array movieEndings{".mov", ".qt",   ".mp4", ".m4v",  ".mxf", ".mkv",  ".avi",
                                      ".mpg", ".mpeg", ".mts", ".m2ts", ".ts",  ".webm", ".dv"};
    return std::find(movieEndings.begin(), movieEndings.end(), ending) != movieEndings.end();
}

std::string moviePath(const std::string& input, const PictureChoice& choice) {
    const bool hasMark = hasViewMark(input);
    const bool onlyView = choice == PictureChoice{.view = choice.view};
    if (!onlyView || (!choice.view.empty() && !hasMark)) {
        throw Failure(
            Exit::Usage,
            fmt::format("{} is a movie, which has no parts, layers, views or channels to choose from",
                        input));
    }
    return pathOfView(input, choice);
}

MovieSource::MovieSource(const std::string& path, const LUT* meaning, HelperKeeper& keeper)
    : movie(std::make_unique<MovieReader>(path, MovieReader::Purpose::Frames, keeper)),
      curve(meaning ? *meaning : *LUT::getLut(srgb)),
      header_(headerOf(movie->facts())),
      numbers(static_cast<std::size_t>(std::max(movie->facts().frames, 0))) {
    if (numbers.empty()) {
        throw Failure(Exit::InputUnreadable, fmt::format("the movie {} has no frames", path));
    }
    std::iota(numbers.begin(), numbers.end(), 1);
    addColours(*movie, header_);
}

MovieSource::~MovieSource() = default;

std::string MovieSource::nameOf(int number) const {
    return fmt::format("frame {} of {}", number, movie->path());
}

PictureHeader MovieSource::header(int number) const {
    if (!has(number)) {
        throw UnreadableImage(
            fmt::format("{} has {} frames and so no frame {}", movie->path(), numbers.size(), number));
    }
    return headerOfFrame(header_, movie->facts(), number);
}

std::unique_ptr<FrameReader> MovieSource::createReader() const {
    return std::make_unique<MovieFrames>(*movie, header_, curve);
}

}  // namespace Corvel
