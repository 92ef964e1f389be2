#include "host/images/IntegerReader.h"

#include <algorithm>
#include <array>

namespace Corvel {
namespace {

struct Kind {
    const char* format;  // the image library's name
    bool (*read)(const IntegerFile&, IntegerScratch&, const IntegerSink&);
};

constexpr std::array kinds{Kind{"dpx", readTenBitDpx}, Kind{"png", readPng}, Kind{"tiff", readTiff}};

}  // namespace

bool IntegerReader::read(const IntegerFile& file, const IntegerPixels& pixels, const Kex::Image::LUT& curve,
                         const Window& display, Picture& picture) {
    const auto* const kind = std::find_if(kinds.begin(), kinds.end(),
                                          [&](const Kind& known) { return file.format == known.format; });
    if (kind == kinds.end()) {
        return false;
    }
    const IntegerSink sink{[&](SampleForm form) {
                               IntegerPixels formed = pixels;
                               formed.form = form;
                               rows.begin(formed, curve, display, picture);
                           },
                           [&](int y, const void* row) { rows.place(y, row); }};
    return kind->read(file, scratch, sink);
}

}  // namespace Corvel
