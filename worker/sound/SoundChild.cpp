#include "worker/sound/SoundChild.h"

#include "platform/Confinement.h"
#include "platform/Descriptors.h"
#include "worker/Status.h"
#include "worker/sound/SoundDecoder.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <exception>
#include <new>

namespace Morvane::Worker {

namespace {

constexpr int pipeDescriptor = 3;

/// Ends the process where nobody reads any more.
void sendBytes(const void* bytes, std::size_t size) {
    const char* next = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t count = write(pipeDescriptor, next, size);
        if (count < 0 && errno != EINTR) {
            _exit(1);
        }
        if (count > 0) {
            next += count;
            size -= static_cast<std::size_t>(count);
        }
    }
}

void send(SoundMessage kind, const void* bytes, std::size_t size) {
    const SoundMessageHeader header{kind, static_cast<std::uint32_t>(size)};
    sendBytes(&header, sizeof header);
    sendBytes(bytes, size);
}

void sendFailure(Status status, const std::string& reason) {
    const auto number = static_cast<std::int32_t>(status);
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    bytes += reason;
    send(SoundMessage::Failure, bytes.data(), bytes.size());
}

void sendForm(const SoundDecoder& decoder) {
    const SoundFormat& format = decoder.format();
    SoundForm form{};
    form.codec = format.codec;
    form.sampleRate = format.sampleRate;
    form.channels = format.channels;
    form.startDelay = decoder.startDelay();
    format.layout.copy(form.layout, sizeof form.layout - 1);
    send(SoundMessage::Form, &form, sizeof form);
}

void decode(const std::string& path) {
    SoundDecoder decoder(path);
    sendForm(decoder);
    std::vector<std::uint8_t> block;
    while (decoder.read(block)) {
        send(SoundMessage::Block, block.data(), block.size());
    }
    send(SoundMessage::End, nullptr, 0);
}

void confineTo(const std::string& path) {
    std::signal(SIGPIPE, SIG_IGN);
    // The limit on files is met by what the library says on standard error, too, where that is a file.
    std::signal(SIGXFSZ, SIG_IGN);
    Platform::endWithParent();
    if (Platform::isConfinementWanted()) {
        Platform::confine({.readable = {path},
                           .writable = {},
                           .removable = {},
                           .memoryBytes = Platform::generousMemoryBytes(),
                           .fileBytes = 0});
    }
}

}  // namespace

void decodeSoundIntoPipe(const std::string& path, int pipeEnd) {
    dup2(pipeEnd, pipeDescriptor);
    Platform::closeDescriptorsFrom(pipeDescriptor + 1);
    try {
        confineTo(path);
        decode(path);
    } catch (const StatusError& error) {
        sendFailure(error.status, error.what());
    } catch (const std::bad_alloc&) {
        sendFailure(Status::NoMemory, "not enough memory to decode " + path);
    } catch (const std::exception& error) {
        sendFailure(Status::CodecFailed, error.what());
    }
    _exit(0);
}

}  // namespace Morvane::Worker
