#include "host/image_library/LibraryContents.h"

#include <fmt/format.h>

#include <cstring>

#include "host/images/ExrContents.h"
#include "host/images/ExrFile.h"

namespace Corvel {
namespace {

// A file that claims more pictures than that is not worth the wait.
constexpr int mostParts = 10'000;

std::string typeOf(const OIIO::ImageSpec& spec, int channel) {
    switch (spec.channelformat(channel).basetype) {
        case OIIO::TypeDesc::HALF:
            return "half";
        case OIIO::TypeDesc::FLOAT:
            return "float";
        case OIIO::TypeDesc::DOUBLE:
            return "double";
        default:
            return fmt::format(
                "{} bits", spec.get_int_attribute("oiio:BitsPerSample",
                                                  static_cast<int>(spec.channelformat(channel).size()) * 8));
    }
}

FilePart partOf(const OIIO::ImageSpec& spec) {
    FilePart part;
    part.name = spec.get_string_attribute("oiio:subimagename");
    part.deep = spec.deep;
    part.storage =
        fmt::format("{}{}", spec.deep ? "deep " : "", spec.tile_width > 0 ? "tiles" : "scan lines");
    part.compression = spec.get_string_attribute("compression");
    part.data = {spec.x, spec.y, spec.width, spec.height};
    part.display = {spec.full_x, spec.full_y, spec.full_width, spec.full_height};
    for (int channel = 0; channel < spec.nchannels; ++channel) {
        part.channels.push_back({spec.channel_name(channel), typeOf(spec, channel)});
    }
    return part;
}

}  // namespace

FileContents libraryContents(const std::string& path, OIIO::ImageInput& input, Parts parts) {
    if (std::strcmp(input.format_name(), "openexr") == 0) {
        if (const ExrFile file(path); file.isOpen()) {
            return contentsOf(file);
        }
    }
    FileContents contents;
    contents.format = input.format_name();
    contents.namesChannels = false;
    contents.parts.push_back(partOf(input.spec()));
    for (int part = 1; parts == Parts::All && part < mostParts && input.seek_subimage(part, 0); ++part) {
        contents.parts.push_back(partOf(input.spec()));
    }
    static_cast<void>(input.geterror());  // there is no next one, which is no error
    return contents;
}

}  // namespace Corvel
