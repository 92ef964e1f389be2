#pragma once

#include "worker/codec/EncodingPlan.h"

#include <string>
#include <vector>

namespace Morvane::Worker {

/// A plan for small pictures.
inline EncodingPlan planFor(const char* type, const std::string& settings = "", int quality = 4,
                            int keyFrameRate = 0) {
    EncodingRequest request;
    request.settings = Settings::parse(settings, *findCodec(type));
    request.width = 64;
    request.height = 48;
    request.quality = quality;
    request.keyFrameRate = keyFrameRate;
    return planEncoding(request);
}

/// A picture of its own for each frame number.
inline std::vector<float> pixelsOf(int frame) {
    std::vector<float> pixels(64 * 48 * 4);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<float>((i * 7 + static_cast<std::size_t>(frame) * 31) % 256) / 255.0F;
    return pixels;
}

}  // namespace Morvane::Worker
