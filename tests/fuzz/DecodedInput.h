#pragma once

#include <cstdint>
#include <new>

extern "C" {
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

#include "tests/fuzz/FuzzPlace.h"
#include "tests/fuzz/MemoryFile.h"
#include "worker/Status.h"

namespace Morvane::Fuzz {

/// In bytes, of one piece of memory for the libraries that decode.
constexpr std::size_t mostAllocated = std::size_t{512} << 20;

/// Gives the path of a file with the input's bytes to `decode`, with no other file in reach and the libraries
/// that decode silent. `decode` may refuse the file with a StatusError or find too little memory for it;
/// whatever else it throws is a finding.
template <typename Decode>
void decodeInput(const std::uint8_t* data, std::size_t size, Decode decode) {
    static const FuzzPlace place;
    av_log_set_level(AV_LOG_QUIET);
    av_max_alloc(mostAllocated);
    const MemoryFile file(data, size);
    try {
        decode(file.path());
    } catch (const Worker::StatusError&) {
    } catch (const std::bad_alloc&) {
    }
}

}  // namespace Morvane::Fuzz
