#include <cstdint>
#include <limits>
#include <sstream>
#include <string>

#include "Kex/Image/Version.h"
#include "Kex/Image/Writer.h"
#include "writer/movWriter.h"

namespace Morvane::Writer {

namespace {

/// The record through which the host finds the writer; registered while the plug-in is loaded.
class Registration {
public:
    Registration() {
        record.buildStamp = KEX_IMAGE_BUILD_STAMP;
        record.formats = "mov";
        record.label = "mov";
        record.constructor = build;
        record.ctor2(Kex::Image::Writer::Description::add);
    }

private:
    Kex::Image::Writer::Description record;
};

const Registration registration;

std::string fixedPointName(int bits) {
    std::ostringstream text;
    text << bits << "-bit fixed";
    return text.str();
}

// Made at load and released at unload. Nothing in the plug-in reads them; they are part of its load-time
// state, deliberately.
[[maybe_unused]] const std::string fixed8 = fixedPointName(8);
[[maybe_unused]] const std::string fixed16 = fixedPointName(16);
[[maybe_unused]] const std::string fixed32 = fixedPointName(32);
[[maybe_unused]] constexpr std::int64_t lastFrame = std::numeric_limits<std::int64_t>::max();
[[maybe_unused]] constexpr std::int64_t lastTime = std::numeric_limits<std::int64_t>::max();
[[maybe_unused]] constexpr std::int64_t firstFrame = std::numeric_limits<std::int64_t>::min();

}  // namespace

}  // namespace Morvane::Writer
