#include "host/image_library/LibraryWriter.h"

#include <OpenImageIO/imageio.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <vector>

#include "Kex/Image/LUT.h"
#include "host/image_library/PngTags.h"
#include "host/images/ImageWriter.h"
#include "host/images/PackedTimecode.h"

namespace Corvel {
namespace {

using Kex::Image::LUT;

// How pictures are stored in one kind of file.
struct Kind {
    const char* ending;
    const char* format;  // the image library's name
    OIIO::TypeDesc type;
    int bits;
    int curve;  // type of Kex::Image::LUT
    bool straightAlpha;
    bool textsOnly;          // has no fields for time code and the like
    bool asTheyAre = false;  // no curve, and no statement about one
    bool divided = false;    // the picture's colours are not multiplied by alpha
};

const std::array kinds{
    Kind{".exr", "openexr", OIIO::TypeHalf, 16, 0, false, false},
    Kind{".dpx", "dpx", OIIO::TypeUInt16, 10, 6, false, false},
    Kind{".png", "png", OIIO::TypeUInt16, 16, 6, true, true},
    Kind{".tif", "tiff", OIIO::TypeUInt16, 16, 6, false, false},
    Kind{".tiff", "tiff", OIIO::TypeUInt16, 16, 6, false, false},
};

const Kind* kindOf(const std::string& path) {
    const std::string ending = OIIO::Strutil::lower(std::filesystem::path(path).extension().string());
    const auto* found =
        std::find_if(kinds.begin(), kinds.end(), [&](const Kind& kind) { return ending == kind.ending; });
    return found == kinds.end() ? nullptr : found;
}

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
    throw UnwritableImage(fmt::format("cannot write {}: {}", path, reason));
}

std::string textOf(const PictureHeader& header, const char* key) {
    const auto found = header.metadata.find(key);
    return found == header.metadata.end() ? "" : found->second;
}

// The rate as a ratio; rates of the 1001 family exactly.
std::array<int, 2> ratioOf(double rate) {
    const double whole = std::round(rate);
    if (std::abs(rate - whole) < 0.001) {
        return {static_cast<int>(whole), 1};
    }
    const double nominal = std::round(rate * 1.001);
    if (std::abs(nominal * 1000 / 1001 - rate) < 0.005) {
        return {static_cast<int>(nominal) * 1000, 1001};
    }
    return {static_cast<int>(std::lround(rate * 1000)), 1000};
}

void describe(const Kind& kind, const PictureHeader& header, OIIO::ImageSpec& spec) {
    spec.attribute("PixelAspectRatio", static_cast<float>(header.pixelAspect));
    spec.attribute("Software", "corvel " CORVEL_VERSION);
    const std::string timecode = textOf(header, "input/timecode");
    const double rate = std::strtod(textOf(header, "input/frame_rate").c_str(), nullptr);
    const std::optional<std::uint32_t> packed = kind.textsOnly ? std::nullopt : packTimecode(timecode, rate);
    if (packed) {
        const std::array<std::uint32_t, 2> words{*packed, 0};
        spec.attribute("smpte:TimeCode", OIIO::TypeTimeCode, words.data());
    } else if (kind.textsOnly && !timecode.empty()) {
        spec.attribute("timecode", timecode);
    }
    if (const std::string reel = textOf(header, "quicktime/reel"); !reel.empty()) {
        spec.attribute("reelName", reel);
        spec.attribute("dpx:InputDevice", reel);
    }
    if (rate > 0) {
        const std::array<int, 2> ratio = ratioOf(rate);
        spec.attribute("framesPerSecond", OIIO::TypeRational, ratio.data());
        spec.attribute("dpx:FrameRate", static_cast<float>(rate));
        spec.attribute("dpx:TemporalFrameRate", static_cast<float>(rate));
    }
}

bool isPng(const Kind& kind) {
    return std::strcmp(kind.format, "png") == 0;
}

bool saysSrgb(const Kind& kind, const PictureHeader& header) {
    return kind.asTheyAre && isPng(kind) && header.primaries == "bt709" && header.transfer == "iec61966-2-1";
}

OIIO::ImageSpec specOf(const Kind& kind, const Picture& picture, const PictureHeader& header) {
    OIIO::ImageSpec spec(picture.width(), picture.height(), picture.channels(), kind.type);
    spec.attribute("oiio:BitsPerSample", kind.bits);
    spec.attribute("compression", "zip");
    spec.attribute("oiio:UnassociatedAlpha", kind.straightAlpha ? 1 : 0);
    if (saysSrgb(kind, header)) {
        spec.attribute("oiio:ColorSpace", "sRGB");
    }
    if (!kind.asTheyAre) {
        spec.attribute("oiio:ColorSpace", kind.curve == 0 ? "Linear" : "sRGB");
    }
    describe(kind, header, spec);
    return spec;
}

// One row as the file stores it. `planes` is scratch memory.
void packRow(const Kind& kind, const Picture& picture, int y, std::vector<float>& plane, float* to) {
    const std::size_t count = static_cast<std::size_t>(picture.width());
    const std::size_t channels = static_cast<std::size_t>(picture.channels());
    const float* alpha = picture.hasAlpha() ? picture.row(3, y) : nullptr;
    const LUT& curve = *LUT::getLut(kind.curve);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const float* from = picture.row(static_cast<int>(channel), y);
        std::copy_n(from, count, plane.data());
        if (channel < 3 && kind.straightAlpha && !kind.divided && alpha) {
            std::transform(from, from + count, alpha, plane.data(),
                           [](float colour, float a) { return a == 0 ? 0 : colour / a; });
        }
        if (channel < 3 && kind.curve != 0) {
            curve.toStored(plane.data(), plane.data(), count, 1);
        }
        for (std::size_t x = 0; x < count; ++x) {
            to[x * channels + channel] = plane[x];
        }
    }
}

std::vector<float> pack(const Kind& kind, const Picture& picture) {
    const std::size_t row =
        static_cast<std::size_t>(picture.width()) * static_cast<std::size_t>(picture.channels());
    std::vector<float> samples(row * static_cast<std::size_t>(picture.height()));
    std::vector<float> plane(static_cast<std::size_t>(picture.width()));
    for (int y = 0; y < picture.height(); ++y) {
        packRow(kind, picture, y, plane, samples.data() + static_cast<std::size_t>(y) * row);
    }
    return samples;
}

// As movies have them: what is not a number is 0.
std::vector<std::uint16_t> nearestIntegers(const std::vector<float>& samples) {
    std::vector<std::uint16_t> integers(samples.size());
    std::transform(samples.begin(), samples.end(), integers.begin(), [](float sample) {
        const double limited = sample > 0 ? std::min(sample, 1.0F) : 0.0;
        return static_cast<std::uint16_t>(std::lrint(limited * 65535));
    });
    return integers;
}

bool writeSamples(OIIO::ImageOutput& output, const Kind& kind, const std::vector<float>& samples) {
    if (kind.asTheyAre && kind.type == OIIO::TypeUInt16 && kind.bits == 16) {
        return output.write_image(OIIO::TypeUInt16, nearestIntegers(samples).data());
    }
    return output.write_image(OIIO::TypeFloat, samples.data());
}

// A hidden file beside `path` that is removed again unless it takes the path's name.
class Unfinished {
public:
    explicit Unfinished(const std::string& wanted) : path(wanted) {
        const std::filesystem::path whole(wanted);
        name = (whole.parent_path() / fmt::format(".{}.{}", whole.filename().string(), getpid())).string();
    }
    ~Unfinished() {
        if (!name.empty()) {
            unlink(name.c_str());
        }
    }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    void finish() {
        if (std::rename(name.c_str(), path.c_str()) != 0) {
            refuse(path, std::strerror(errno));
        }
        name.clear();
    }

    std::string name;

private:
    const std::string path;
};

}  // namespace

void writeThroughLibrary(const std::string& path, const Picture& picture, const PictureHeader& header,
                         ImageValues values) {
    const Kind* const known = kindOf(path);
    if (!known) {
        refuse(path, fmt::format("images are written as {}", writableImageEndings()));
    }
    Kind kind = *known;
    kind.asTheyAre = values != ImageValues::LinearLight;
    kind.divided = values == ImageValues::StraightAsTheyAre;
    if (kind.asTheyAre) {
        kind.curve = 0;
        kind.straightAlpha = kind.straightAlpha || kind.divided;
    }
    const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(kind.format);
    if (!output) {
        refuse(path, OIIO::geterror());
    }
    output->threads(1);
    Unfinished file(path);
    if (!output->open(file.name, specOf(kind, picture, header)) ||
        !writeSamples(*output, kind, pack(kind, picture)) || !output->close()) {
        refuse(path, output->geterror());
    }
    if (kind.asTheyAre && isPng(kind) && !tagPng(file.name, header.primaries, header.transfer)) {
        refuse(path, std::strerror(errno));
    }
    file.finish();
}

}  // namespace Corvel
