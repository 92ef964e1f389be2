#pragma once

#include "tests/integration/codecs/NaturalPicture.h"
#include "worker/codec/EncodingPlan.h"
#include "worker/encode/EncoderContext.h"
#include "worker/picture/PicturePool.h"

#include <string>
#include <vector>

namespace Morvane::Worker::Trial {

/// What an encoder made of some pictures.
struct Encoded {
    EncodingPlan plan;
    ParametersPointer parameters;
    std::vector<PacketPointer> packets;

    std::size_t bytes() const;
};

/// Encodes `pictures` through the whole pipeline.
Encoded encode(const EncodingPlan& plan, const std::vector<Pixels>& pictures);

/// Decodes in this process with libavcodec, from the track's description and its packets alone.
std::vector<FramePointer> decode(const Encoded& encoded);

/// The picture that the conversion makes of `pixels`, for a lossless codec's exact comparison.
FramePointer converted(const EncodingPlan& plan, const Pixels& pixels);

/// Writes a movie with libav's muxer, so that other programs can read it.
void writeMovie(const Encoded& encoded, const std::string& path);

/// The components of a picture (R, G, B, alpha or Y, Cb, Cr, alpha), each a plane of whole numbers, whatever
/// its layout.
using Components = std::vector<std::vector<int>>;
Components components(const AVFrame& frame);

/// The picture's samples without padding, as `rawvideo` has them.
std::string packedBytes(const AVFrame& frame);

/// The picture as floats RGB(A), 0…1, its YCbCr taken apart with the matrix and range of `colour`, chroma
/// samples interpolated; alpha 1 where there is none.
Pixels rgbOf(const AVFrame& frame, const ColourDecision& colour);

/// dB over red, green and blue of pictures limited to 0…1; 100 where they are the same.
double psnr(const Pixels& one, const Pixels& other);

}  // namespace Morvane::Worker::Trial
