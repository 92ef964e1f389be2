#pragma once

#include <optional>

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace Morvane::Worker {

/// What luma has of red and of blue; the rest is green.
struct LumaWeights {
    double red, blue;

    /// Of a matrix (ITU-T H.273, table 4); nothing for those that are made in another way. The
    /// constant-luminance form of BT.2020 is taken for the usual one, which is near.
    static std::optional<LumaWeights> of(AVColorSpace matrix);
};

}  // namespace Morvane::Worker
