#include "worker/sound/SoundFile.h"

#include "worker/Status.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>

namespace Morvane::Worker {

namespace {

constexpr std::uint32_t longestMessage = 256u << 20;  // bytes
constexpr int mostChannels = 1024;
constexpr std::uint32_t highestRate = 10'000'000;
constexpr std::int64_t longestDelay = std::int64_t{1} << 48;

bool isTrackCodec(std::int32_t codec) {
    constexpr std::array known = {AV_CODEC_ID_PCM_S16BE, AV_CODEC_ID_PCM_S24BE, AV_CODEC_ID_PCM_S32BE,
                                  AV_CODEC_ID_PCM_F32BE, AV_CODEC_ID_PCM_F64BE};
    return std::any_of(known.begin(), known.end(), [&](AVCodecID one) { return one == codec; });
}

[[noreturn]] void throwSent(const std::vector<std::uint8_t>& bytes) {
    std::int32_t number = 0;
    std::memcpy(&number, bytes.data(), sizeof number);
    const std::string reason(bytes.begin() + sizeof number, bytes.end());
    throw StatusError(number < 0 ? static_cast<Status>(number) : Status::CodecFailed, reason);
}

}  // namespace

SoundFile::SoundFile(const std::string& soundPath) : path(soundPath) {
    start();
    try {
        readFormat();
    } catch (...) {
        stop();
        throw;
    }
}

SoundFile::~SoundFile() {
    stop();
}

void SoundFile::start() {
    int ends[2];
    if (pipe(ends) != 0) {
        throw StatusError(Status::NoMemory, "cannot make a pipe: " + std::generic_category().message(errno));
    }
    fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    process = fork();
    if (process == 0) {
        decodeSoundIntoPipe(path, ends[1]);
    }
    close(ends[1]);
    pipeEnd = ends[0];
    if (process == -1) {
        close(pipeEnd);
        throw StatusError(Status::NoMemory, "cannot make a process to decode " + path);
    }
}

void SoundFile::stop() {
    close(pipeEnd);
    kill(process, SIGKILL);
    while (waitpid(process, nullptr, 0) == -1 && errno == EINTR) {
    }
}

const SoundFormat& SoundFile::format() const {
    return form;
}

std::int64_t SoundFile::startDelay() const {
    return delay;
}

bool SoundFile::read(std::vector<std::uint8_t>& block) {
    Message message = receive();
    if (message.kind == SoundMessage::End) {
        return false;
    }
    if (message.kind != SoundMessage::Block || message.bytes.empty() ||
        message.bytes.size() % form.bytesPerFrame() != 0) {
        fail("its decoder sent nonsense");
    }
    block = std::move(message.bytes);
    return true;
}

void SoundFile::readFormat() {
    const Message message = receive();
    SoundForm sent{};
    if (message.kind != SoundMessage::Form || message.bytes.size() != sizeof sent) {
        fail("its decoder sent nonsense");
    }
    std::memcpy(&sent, message.bytes.data(), sizeof sent);
    sent.layout[sizeof sent.layout - 1] = '\0';
    if (!isTrackCodec(sent.codec) || sent.sampleRate == 0 || sent.sampleRate > highestRate ||
        sent.channels < 1 || sent.channels > mostChannels || sent.startDelay < 0 ||
        sent.startDelay > longestDelay) {
        fail("its form is impossible");
    }
    form = {static_cast<AVCodecID>(sent.codec), sent.sampleRate, sent.channels, sent.layout};
    delay = sent.startDelay;
}

SoundFile::Message SoundFile::receive() {
    SoundMessageHeader header{};
    if (!receiveBytes(&header, sizeof header) || header.bytes > longestMessage) {
        fail("its decoder ended");
    }
    Message message{header.kind, std::vector<std::uint8_t>(header.bytes)};
    if (!receiveBytes(message.bytes.data(), message.bytes.size())) {
        fail("its decoder ended");
    }
    if (message.kind == SoundMessage::Failure && message.bytes.size() >= sizeof(std::int32_t)) {
        throwSent(message.bytes);
    }
    return message;
}

bool SoundFile::receiveBytes(void* buffer, std::size_t size) {
    char* next = static_cast<char*>(buffer);
    while (size > 0) {
        const ssize_t count = ::read(pipeEnd, next, size);
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return false;
        }
        if (count > 0) {
            next += count;
            size -= static_cast<std::size_t>(count);
        }
    }
    return true;
}

void SoundFile::fail(const std::string& what) const {
    throw StatusError(Status::CodecFailed, fmt::format("cannot read sound from {}: {}", path, what));
}

}  // namespace Morvane::Worker
