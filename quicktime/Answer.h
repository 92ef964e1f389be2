#pragma once

#include <cstdint>
#include <string>

namespace Morvane::QuickTime {

/// Statuses that the bridge itself finds; the worker's own are listed in docs/protocol.md.
inline constexpr std::int32_t answerTooShort = -36;   ///< a frame is missing or cut short: input/output error
inline constexpr std::int32_t noSharedMemory = -108;  ///< the data file could not be grown: no memory

/// Bytes at the start of an answer that are enough to tell an error and its number.
inline constexpr std::uint64_t errorAnswerLength = 32;

/// Does the answer begin with "Error: "?
bool isError(const std::string& answer);

/// The number after "Error: " into `result`, which keeps its value when there is none.
/// REQUIRES: isError(answer).
void readErrorCode(const std::string& answer, std::int32_t& result);

/// Bytes in a frame of four floats a pixel, wrapped in 32 signed bits and then widened, as both sides count.
std::uint64_t frameBytes(std::int32_t width, std::int32_t height);

}  // namespace Morvane::QuickTime
