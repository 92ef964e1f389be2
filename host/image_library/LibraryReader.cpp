#include "host/image_library/LibraryReader.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <OpenImageIO/imageio.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <mutex>

#include "Kex/Image/LUT.h"
#include "host/image_library/FileStatement.h"
#include "host/image_library/LibraryContents.h"
#include "host/images/ChannelLayout.h"
#include "host/images/DpxFile.h"
#include "host/images/PlacePixels.h"

namespace Corvel {
namespace {

using Kex::Image::LUT;

// One line out of what a library says, which may be several or none.
std::string oneLine(std::string reason) {
    const std::size_t end = reason.find_last_not_of(" \n\r");
    reason.erase(end == std::string::npos ? 0 : end + 1);
    std::replace(reason.begin(), reason.end(), '\n', ';');
    return reason.empty() ? "no reason given" : reason;
}

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
    throw UnreadableImage(fmt::format("cannot read {}: {}", path, oneLine(reason)));
}

std::unique_ptr<OIIO::ImageInput> openFile(const std::string& path) {
    // Straight alpha must reach us unmultiplied: it is multiplied in linear light, after the curve.
    OIIO::ImageSpec options;
    options.attribute("oiio:UnassociatedAlpha", 1);
    std::unique_ptr<OIIO::ImageInput> input = OIIO::ImageInput::open(path, &options);
    if (!input) {
        refuse(path, OIIO::geterror());
    }
    input->threads(1);
    return input;
}

void checkSize(const std::string& path, int width, int height) {
    if (16.0 * width * height > std::numeric_limits<std::int32_t>::max()) {
        refuse(path,
               fmt::format("a picture of {} x {} pixels takes more than 2 GiB as floats", width, height));
    }
}

void checkPixels(const std::string& path, const OIIO::ImageSpec& spec) {
    if (spec.deep) {
        refuse(path, "it has deep samples; flatten it first");
    }
    if (spec.depth > 1) {
        refuse(path, "it is a volume, not a picture");
    }
    if (spec.width < 1 || spec.height < 1 || spec.nchannels < 1) {
        refuse(path, "it has no pixels");
    }
    checkSize(path, spec.width, spec.height);
    checkSize(path, spec.full_width, spec.full_height);
}

Window displayWindowOf(const OIIO::ImageSpec& spec) {
    if (spec.full_width < 1 || spec.full_height < 1) {
        return {spec.x, spec.y, spec.width, spec.height};
    }
    return {spec.full_x, spec.full_y, spec.full_width, spec.full_height};
}

double pixelAspectOf(const OIIO::ImageSpec& spec) {
    const double aspect = spec.get_float_attribute("PixelAspectRatio", 1.0f);
    return std::isfinite(aspect) && aspect > 0 ? aspect : 1.0;
}

// How the picture must be turned to stand upright, as in TIFF and Exif: 1 to 8.
constexpr int upright = 1;

int orientationOf(const OIIO::ImageSpec& spec) {
    const int orientation = spec.get_int_attribute("Orientation", upright);
    return orientation >= 1 && orientation <= 8 ? orientation : upright;
}

// Of the channels that are read, where they differ.
int bitsOf(const OIIO::ImageSpec& spec, const ChannelLayout& layout) {
    if (spec.channelformats.empty()) {
        return spec.get_int_attribute("oiio:BitsPerSample", static_cast<int>(spec.format.size()) * 8);
    }
    std::size_t bytes = 0;
    for (const int channel : {layout.red, layout.green, layout.blue, layout.alpha}) {
        bytes = std::max(bytes, channel < 0 ? 0 : spec.channelformat(channel).size());
    }
    return static_cast<int>(bytes) * 8;
}

PictureHeader headerOf(const OIIO::ImageSpec& spec, const ChannelLayout& layout) {
    PictureHeader header;
    header.display = displayWindowOf(spec);
    header.data = {spec.x, spec.y, spec.width, spec.height};
    header.pixelAspect = pixelAspectOf(spec);
    header.hasAlpha = layout.alpha >= 0;
    header.bits = bitsOf(spec, layout);
    header.floatingPoint = spec.channelformat(layout.red).is_floating_point();
    header.curve = curveOf(spec);
    header.colourSpace = colourSpaceOf(spec);
    header.chromaticities = chromaticitiesOf(spec);
    header.metadata = metadataOf(spec);
    header.attributes = attributesOf(spec);
    if (const int orientation = orientationOf(spec); orientation != upright) {
        const bool onItsSide = orientation > 4;
        header.data = {0, 0, onItsSide ? spec.height : spec.width, onItsSide ? spec.width : spec.height};
        header.display = header.data;
        header.pixelAspect = onItsSide ? 1 / header.pixelAspect : header.pixelAspect;
    }
    return header;
}

// Turns the pixels in `samples` upright.
void turnUpright(const std::string& path, const OIIO::ImageSpec& spec, int channels,
                 std::vector<float>& samples) {
    OIIO::ImageSpec layout(spec.width, spec.height, channels, OIIO::TypeFloat);
    layout.attribute("Orientation", orientationOf(spec));
    const OIIO::ImageBuf turned = OIIO::ImageBufAlgo::reorient(OIIO::ImageBuf(layout, samples.data()), 1);
    if (turned.has_error() || !turned.get_pixels(turned.roi(), OIIO::TypeFloat, samples.data())) {
        refuse(path, turned.geterror());
    }
}

// The same channels in the library's order, which is not the file's.
ChannelLayout inLibrarysOrder(const ChannelLayout& layout, const std::vector<StoredChannel>& stored,
                              const OIIO::ImageSpec& spec) {
    const auto find = [&](int channel) {
        return channel < 0 ? -1 : spec.channelindex(stored[static_cast<std::size_t>(channel)].name);
    };
    return {find(layout.red), find(layout.green), find(layout.blue), find(layout.alpha)};
}

OpenPicture openPicture(const std::string& path, const PictureChoice& choice) {
    OpenPicture open;
    open.input = openFile(path);
    const bool all = !choice.part.empty() || !choice.layer.empty();
    const FileContents contents = libraryContents(path, *open.input, all ? Parts::All : Parts::First);
    const ChosenPicture chosen = chooseFrom(path, contents, choice);
    open.part = chosen.part;
    if (!open.input->seek_subimage(chosen.part, 0)) {
        refuse(path, open.input->geterror());
    }
    open.spec = open.input->spec();
    if (contents.format == "dpx" && !dpxHasIndustryPart(path)) {
        forgetIndustryPart(open.spec);
    }
    checkPixels(path, open.spec);
    open.layout = inLibrarysOrder(chosen.layout,
                                  contents.parts[static_cast<std::size_t>(chosen.part)].channels, open.spec);
    if (std::min({open.layout.red, open.layout.green, open.layout.blue}) < 0) {
        refuse(path, "its channels cannot be told apart");
    }
    open.header = headerOf(open.spec, open.layout);
    open.header.picked = textOf(contents, chosen);
    if (chosen.part != 0) {
        // What concerns the whole shot may be stated by the first part alone.
        open.header.metadata.merge(metadataOf(open.input->spec(0)));
    }
    return open;
}

// Interleaved samples, as many channels as are read.
struct Samples {
    int channels = 0;
    ChannelLayout layout;  ///< indices among them
};

bool isNumber(const OpenPicture& open, int channel) {
    return open.spec.channelformat(channel) == OIIO::TypeUInt32 &&
           std::strcmp(open.input->format_name(), "openexr") == 0;
}

// Reads one channel into every `channels`th sample from `to` on. Whole numbers of OpenEXR, such as those that
// tell objects apart, keep their values, which the library would make shares of the largest one.
bool readChannel(const OpenPicture& open, int channel, int channels, float* to) {
    const bool number = isNumber(open, channel);
    const auto stride = static_cast<OIIO::stride_t>(sizeof(float)) * channels;
    if (!open.input->read_image(open.part, 0, channel, channel + 1,
                                number ? OIIO::TypeUInt32 : OIIO::TypeFloat, to, stride)) {
        return false;
    }
    for (OIIO::imagesize_t i = 0; number && i < open.spec.image_pixels(); ++i) {
        float& sample = to[i * static_cast<OIIO::imagesize_t>(channels)];
        std::uint32_t value = 0;
        std::memcpy(&value, &sample, sizeof value);
        sample = static_cast<float>(value);
    }
    return true;
}

// One by one: for channels that lie far apart, or that the library would convert in another way.
bool readOneByOne(const OpenPicture& open, std::vector<float>& scratch, Samples& samples) {
    std::vector<int> wanted;
    const auto place = [&](int channel) {
        const auto found = std::find(wanted.begin(), wanted.end(), channel);
        if (channel >= 0 && found == wanted.end()) {
            wanted.push_back(channel);
            return static_cast<int>(wanted.size()) - 1;
        }
        return channel < 0 ? -1 : static_cast<int>(found - wanted.begin());
    };
    const ChannelLayout& layout = open.layout;
    // In this order: braces evaluate from left to right.
    samples.layout = {place(layout.red), place(layout.green), place(layout.blue), place(layout.alpha)};
    samples.channels = static_cast<int>(wanted.size());
    scratch.resize(open.spec.image_pixels() * wanted.size());
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (!readChannel(open, wanted[i], samples.channels, scratch.data() + i)) {
            return false;
        }
    }
    return true;
}

// Whether colours are still to be multiplied: not by a channel that was merely named as alpha.
bool hasStraightAlpha(const OpenPicture& open) {
    return open.layout.alpha >= 0 && open.layout.alpha == open.spec.alpha_channel &&
           open.spec.get_int_attribute("oiio:UnassociatedAlpha") != 0;
}

bool readSamples(const OpenPicture& open, std::vector<float>& scratch, Samples& samples) {
    constexpr int nearby = 8;  // channels that are read although few of them are wanted
    const ChannelLayout& layout = open.layout;
    const int begin = layout.begin();
    bool oneByOne = layout.end() - begin > nearby;
    for (const int channel : {layout.red, layout.green, layout.blue, layout.alpha}) {
        oneByOne = oneByOne || (channel >= 0 && isNumber(open, channel));
    }
    if (oneByOne) {
        return readOneByOne(open, scratch, samples);
    }
    samples.channels = layout.end() - begin;
    samples.layout = {layout.red - begin, layout.green - begin, layout.blue - begin,
                      layout.alpha < 0 ? -1 : layout.alpha - begin};
    scratch.resize(open.spec.image_pixels() * static_cast<std::size_t>(samples.channels));
    return open.input->read_image(open.part, 0, begin, layout.end(), OIIO::TypeFloat, scratch.data());
}

}  // namespace

LibraryReader::LibraryReader(PictureChoice wanted) : choice(std::move(wanted)) {
    static std::once_flag once;
    std::call_once(once, [] {
        OIIO::attribute("threads", 1);
        OIIO::attribute("exr_threads", -1);  // -1: none besides the caller
    });
}

FileContents readLibraryContents(const std::string& path) {
    const std::unique_ptr<OIIO::ImageInput> input = openFile(path);
    return libraryContents(path, *input, Parts::All);
}

PictureHeader LibraryReader::readHeader(const std::string& path) {
    return openPicture(path, choice).header;
}

PictureHeader LibraryReader::read(const std::string& path, const LUT* curve, Picture& picture) {
    const OpenPicture open = openPicture(path, choice);
    const LUT& stated = *(curve ? curve : LUT::find(open.header.curve));
    prepareFor(open.header, picture);
    if (!readIntegers(path, open, stated, picture)) {
        readThroughLibrary(path, open, stated, picture);
    }
    return open.header;
}

bool LibraryReader::readIntegers(const std::string& path, const OpenPicture& open, const LUT& curve,
                                 Picture& picture) {
    const OIIO::ImageSpec& spec = open.spec;
    const bool whole = spec.format == OIIO::TypeUInt8 || spec.format == OIIO::TypeUInt16;
    if (open.part != 0 || orientationOf(spec) != upright || !whole || !spec.channelformats.empty()) {
        return false;
    }
    const IntegerPixels pixels{.channels = spec.nchannels,
                               .layout = open.layout,
                               .straightAlpha = hasStraightAlpha(open),
                               .window = open.header.data};
    const IntegerFile file{path,           spec.width,         spec.height,
                           spec.nchannels, spec.format.size(), open.input->format_name()};
    return integers.read(file, pixels, curve, open.header.display, picture);
}

void LibraryReader::readThroughLibrary(const std::string& path, const OpenPicture& open, const LUT& curve,
                                       Picture& picture) {
    Samples samples;
    const bool done = readSamples(open, scratch, samples);
    // Some formats say that all is well and still leave an error behind, for a file that is cut short.
    if (!done || open.input->has_error()) {
        refuse(path, open.input->geterror());
    }
    if (!dpxIsComplete(path)) {
        refuse(path, "the file is cut short");
    }
    if (orientationOf(open.spec) != upright) {
        turnUpright(path, open.spec, samples.channels, scratch);
    }
    const InterleavedPixels pixels{
        .samples = scratch.data(),
        .window = open.header.data,
        .channels = samples.channels,
        .layout = samples.layout,
        .straightAlpha = hasStraightAlpha(open),
        .curve = curve,
    };
    placePixels(pixels, open.header.display, picture);
}

}  // namespace Corvel
