#pragma once

#include <string>

#include "worker/LibavPointers.h"
#include "worker/picture/BufferPool.h"

namespace Morvane::Worker {

/// A decoder for `stream`, with as many threads as there are cores. Its pictures lie in `memory`, which must
/// outlive it, wherever the decoder leaves that to others. `path` is for messages. Throws StatusError
/// (CodecFailed, NoMemory).
CodecPointer openDecoder(const AVStream& stream, const std::string& path, BufferPool& memory);

/// Whether every packet of `codec` is a picture of its own.
bool isIntraOnly(AVCodecID codec);

}  // namespace Morvane::Worker
