#include "host/render/Curves.h"

#include <fmt/format.h>
#include <strings.h>

#include "Kex/Image/LUT.h"
#include "host/render/Failure.h"

namespace Corvel {

using Kex::Image::LUT;

const LUT* curveNamed(const std::string& name) {
    for (int type = 0; const LUT* curve = LUT::getLut(type); ++type) {
        if (strcasecmp(curve->name(), name.c_str()) == 0) {
            return curve;
        }
    }
    throw Failure(Exit::Usage, fmt::format("there is no curve \"{}\"; there are {}", name, curveNames()));
}

std::string curveNames() {
    std::string names;
    for (int type = 0; const LUT* curve = LUT::getLut(type); ++type) {
        names += (names.empty() ? "" : ", ") + std::string(curve->name());
    }
    return names;
}

std::string transferOf(const LUT& curve) {
    struct Named {
        const char* curve;
        const char* transfer;
    };
    // Neither the other exponents nor film density have a number of their own there.
    for (const Named& named : {Named{"linear", "linear"},
                               {"rec709", "bt709"},
                               {"gamma2.2", "gamma22"},
                               {"srgb", "iec61966-2-1"}}) {
        if (std::string(curve.name()) == named.curve) {
            return named.transfer;
        }
    }
    return "";
}

}  // namespace Corvel
