#include "host/image_library/LibraryReader.h"

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <OpenImageIO/imageio.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <mutex>

#include "Kex/Image/LUT.h"
#include "host/image_library/DpxFile.h"
#include "host/image_library/FileStatement.h"
#include "host/images/ChannelLayout.h"
#include "host/images/ExrFile.h"
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

PictureHeader headerOf(const OIIO::ImageSpec& spec) {
    PictureHeader header;
    header.display = displayWindowOf(spec);
    header.data = {spec.x, spec.y, spec.width, spec.height};
    header.pixelAspect = pixelAspectOf(spec);
    header.hasAlpha = findChannels(spec.channelnames).alpha >= 0;
    header.bits = spec.get_int_attribute("oiio:BitsPerSample", static_cast<int>(spec.format.size()) * 8);
    header.floatingPoint = spec.format.is_floating_point();
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

ExrScanlines::ChannelNames channelNames(const OIIO::ImageSpec& spec, const ChannelLayout& layout) {
    const auto name = [&spec](int channel) {
        return channel < 0 ? std::string() : spec.channelnames[static_cast<std::size_t>(channel)];
    };
    return {name(layout.red), name(layout.green), name(layout.blue), name(layout.alpha)};
}

}  // namespace

LibraryReader::LibraryReader() {
    static std::once_flag once;
    std::call_once(once, [] {
        OIIO::attribute("threads", 1);
        OIIO::attribute("exr_threads", -1);  // -1: none besides the caller
    });
}

PictureHeader LibraryReader::readHeader(const std::string& path) {
    const std::unique_ptr<OIIO::ImageInput> input = openFile(path);
    checkPixels(path, input->spec());
    return headerOf(input->spec());
}

PictureHeader LibraryReader::read(const std::string& path, const LUT* curve, Picture& picture) {
    const std::unique_ptr<OIIO::ImageInput> input = openFile(path);
    const OIIO::ImageSpec spec = input->spec();
    checkPixels(path, spec);
    const PictureHeader header = headerOf(spec);
    const ChannelLayout layout = findChannels(spec.channelnames);
    const LUT& stated = *(curve ? curve : LUT::find(header.curve));
    prepareFor(header, picture);

    if (orientationOf(spec) == upright && std::strcmp(input->format_name(), "openexr") == 0) {
        const ExrFile file(path);
        if (file.isOpen() && scanlines.read(file, channelNames(spec, layout), header.display, picture)) {
            linearise(header, stated, picture);
            return header;
        }
    }
    readThroughLibrary(path, *input, layout, stated, header, picture);
    return header;
}

void LibraryReader::readThroughLibrary(const std::string& path, OIIO::ImageInput& input,
                                       const ChannelLayout& layout, const LUT& curve,
                                       const PictureHeader& header, Picture& picture) {
    const OIIO::ImageSpec& spec = input.spec();
    const int begin = layout.begin();
    const int channels = layout.end() - begin;
    scratch.resize(spec.image_pixels() * static_cast<std::size_t>(channels));
    const bool done = input.read_image(0, 0, begin, layout.end(), OIIO::TypeFloat, scratch.data());
    // Some formats say that all is well and still leave an error behind, for a file that is cut short.
    if (!done || input.has_error()) {
        refuse(path, input.geterror());
    }
    if (!dpxIsComplete(path)) {
        refuse(path, "the file is cut short");
    }
    if (orientationOf(spec) != upright) {
        turnUpright(path, spec, channels, scratch);
    }

    const InterleavedPixels pixels{
        .samples = scratch.data(),
        .window = header.data,
        .channels = channels,
        .layout = {layout.red - begin, layout.green - begin, layout.blue - begin, layout.alpha - begin},
        .straightAlpha = header.hasAlpha && spec.get_int_attribute("oiio:UnassociatedAlpha") != 0,
        .curve = curve,
    };
    placePixels(pixels, header.display, picture);
}

}  // namespace Corvel
