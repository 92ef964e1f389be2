#pragma once

#include "worker/sound/SoundChild.h"
#include "worker/sound/SoundFormat.h"

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Morvane::Worker {

/// A sound file, or the sound of a movie, being decoded from its beginning. Any file that libav can decode.
///
/// Sound files may come from anywhere, and the worker that adds one to a movie can write files. So a process
/// of its own decodes, confined to reading this one file, from construction to destruction; what it sends is
/// checked before it is used. docs/adr/0014-sound-is-decoded-by-a-process-of-its-own.md tells why.
class SoundFile {
public:
    /// Throws StatusError: NotFound, NoPermission; BadArgument for a file that is none of sound.
    explicit SoundFile(const std::string& path);
    ~SoundFile();
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;

    /// The form in which a movie holds it without loss: the file's channels, layout and rate; integers of 16,
    /// 24 or 32 bits (8-bit ones are widened), floats of 32 or 64.
    const SoundFormat& format() const;

    /// Sample frames by which the sound begins later than the file as a whole; 0 but for some movies.
    std::int64_t startDelay() const;

    /// Replaces `block` by the next sample frames in that form, at least one; false at the end. Throws
    /// BadArgument for a damaged file, with the place; CodecFailed where it made the decoder end.
    bool read(std::vector<std::uint8_t>& block);

private:
    struct Message {
        SoundMessage kind;
        std::vector<std::uint8_t> bytes;
    };

    void start();
    void stop();
    Message receive();
    bool receiveBytes(void* buffer, std::size_t size);
    void readFormat();
    [[noreturn]] void fail(const std::string& what) const;

    const std::string path;
    pid_t process = -1;
    int pipeEnd = -1;
    SoundFormat form;
    std::int64_t delay = 0;
};

}  // namespace Morvane::Worker
