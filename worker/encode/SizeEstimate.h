#pragma once

#include "worker/codec/EncodingPlan.h"

namespace Morvane::Worker {

/// Bytes that a pixel takes when pictures as a camera makes them are encoded by this plan, measured on a few
/// sample pictures of the plan's size; more or less twofold for real ones. Takes as long as that. Throws
/// StatusError where the encoder refuses.
double estimateBytesPerPixel(const EncodingPlan& plan);

}  // namespace Morvane::Worker
