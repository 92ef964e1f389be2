#include "host/image_library/IntegerReader.h"

#include <array>
#include <cstring>

namespace Corvel {
namespace {

struct Kind {
    const char* format;  // the image library's name
    bool (*read)(const IntegerFile&, IntegerScratch&, const IntegerSink&);
};

constexpr std::array kinds{Kind{"dpx", readTenBitDpx}, Kind{"png", readPng}, Kind{"tiff", readTiff}};

}  // namespace

bool IntegerReader::read(const std::string& path, const OIIO::ImageInput& file, const IntegerPixels& pixels,
                         const Kex::Image::LUT& curve, const Window& display, Picture& picture) {
    const OIIO::ImageSpec& spec = file.spec();
    const bool whole = spec.format == OIIO::TypeUInt8 || spec.format == OIIO::TypeUInt16;
    if (!whole || !spec.channelformats.empty()) {
        return false;
    }
    for (const Kind& kind : kinds) {
        if (std::strcmp(file.format_name(), kind.format) != 0) {
            continue;
        }
        const IntegerSink sink{[&](SampleForm form) {
                                   IntegerPixels formed = pixels;
                                   formed.form = form;
                                   rows.begin(formed, curve, display, picture);
                               },
                               [&](int y, const void* row) { rows.place(y, row); }};
        return kind.read({path, spec.width, spec.height, spec.nchannels, spec.format.size()}, scratch, sink);
    }
    return false;
}

}  // namespace Corvel
