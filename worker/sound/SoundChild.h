#pragma once

#include <cstdint>
#include <string>

namespace Morvane::Worker {

/// What the process that decodes a sound file sends through its pipe: messages of a kind, a length in bytes
/// and so many bytes, numbers as the machine has them. First the form, then blocks, at last the end or a
/// failure.
enum class SoundMessage : std::uint32_t {
    Form = 1,  ///< SoundForm
    Block,     ///< sample frames in that form
    End,       ///< nothing
    Failure,   ///< a status number (32 bits), then the reason as text
};

struct SoundMessageHeader {
    SoundMessage kind;
    std::uint32_t bytes;
};

struct SoundForm {
    std::int32_t codec;
    std::uint32_t sampleRate;
    std::int32_t channels;
    std::int64_t startDelay;
    char layout[256];  ///< with its zero byte
};

/// The life of that process, in a fresh fork: gives up all but reading `path`, decodes it into `pipeEnd`, and
/// ends the process.
[[noreturn]] void decodeSoundIntoPipe(const std::string& path, int pipeEnd);

}  // namespace Morvane::Worker
