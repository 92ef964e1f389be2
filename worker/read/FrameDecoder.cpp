#include "worker/read/FrameDecoder.h"

#include <cerrno>
#include <limits>
#include <utility>

#include "worker/Status.h"
#include "worker/read/VideoDecoder.h"

namespace Morvane::Worker {

FrameDecoder::FrameDecoder(const MovieInput& movieInput, const FrameIndex& frameIndex)
    : movie(movieInput),
      index(frameIndex),
      input(movie.openAgain()),
      decoder(openDecoder(input->video(), movie.source()->path, pictures)),
      packet(requireMemory(av_packet_alloc())) {
    startAt(0);
}

bool FrameDecoder::isIntraOnly() const {
    return Worker::isIntraOnly(decoder->codec_id);
}

void FrameDecoder::startAt(std::size_t wanted) {
    avcodec_flush_buffers(decoder.get());
    draining = atEnd = false;
    // What is shown before the key frame that decoding starts at needs frames that are not decoded now.
    firstTime = wanted == 0 ? std::numeric_limits<std::int64_t>::min() : index.packet(wanted).showingTime;
    if (goTo(wanted))
        return;
    // The format cannot go there: from the start, then.
    input = movie.openAgain();
    nextPacket = 0;
    hasPacket = false;
    while (nextPacket < wanted) {
        if (!input->readPacket(*packet))
            throw StatusError(Status::InputOutput, "cannot read " + movie.source()->path + " any further");
        ++nextPacket;
    }
}

/// Makes the packet at `wanted` the next one; false where the format does not get there.
bool FrameDecoder::goTo(std::size_t wanted) {
    if (hasPacket && nextPacket == wanted)
        return true;
    // A format may stop somewhat behind the time that it is asked for: then from one key packet earlier.
    if (input->seek(index.packet(wanted).seekTime) && matchFirstPacket(wanted))
        return true;
    if (input->seek(index.packet(index.keyBefore(wanted)).seekTime) && matchFirstPacket(wanted))
        return true;
    return input->rewind() && matchFirstPacket(wanted);
}

/// Reads on until the packet at `wanted` is the next one. False where it lies behind, or no packet can be
/// told.
bool FrameDecoder::matchFirstPacket(std::size_t wanted) {
    hasPacket = false;
    std::optional<std::size_t> found;
    constexpr int mostUnknown = 64;
    for (int unknown = 0; unknown < mostUnknown && input->readPacket(*packet);) {
        found = found ? std::optional(*found + 1) : index.find(FrameIndex::identify(*input, *packet));
        if (!found)
            ++unknown;
        else if (*found > wanted)
            return false;
        else if (*found == wanted) {
            nextPacket = wanted;
            return hasPacket = true;
        }
    }
    return false;
}

std::optional<DecodedFrame> FrameDecoder::next(std::optional<std::size_t> lastPacket) {
    for (;;) {
        if (auto frame = take())
            return frame;
        if (draining)
            return std::nullopt;
        feed(lastPacket.value_or(index.packetCount()));
    }
}

/// Makes the decoder give what has gone in and has not come out.
void FrameDecoder::drain() {
    avcodec_send_packet(decoder.get(), nullptr);
    draining = true;
}

/// Sends the next packet, or drains where there is none up to `lastPacket`.
void FrameDecoder::feed(std::size_t lastPacket) {
    if (nextPacket > lastPacket)
        return drain();
    atEnd = nextPacket >= index.packetCount() || (!hasPacket && !input->readPacket(*packet));
    if (atEnd)
        return drain();
    hasPacket = false;
    // The decoder carries this number through to the frame, however it reorders.
    packet->pts = static_cast<std::int64_t>(nextPacket++);
    packet->dts = AV_NOPTS_VALUE;
    // A sample that the file's end has cut is not decoded: half a picture would pass for a whole one.
    const bool cut = input->isQuickTime() && (packet->flags & AV_PKT_FLAG_CORRUPT) != 0;
    if (!cut)
        avcodec_send_packet(decoder.get(), packet.get());
}

std::optional<DecodedFrame> FrameDecoder::take() {
    FramePointer picture(requireMemory(av_frame_alloc()));
    // Each damaged packet gives an error of its own; a decoder that gives nothing else is left alone.
    constexpr int mostErrors = 1000;
    for (int errors = 0; errors < mostErrors;) {
        const int result = avcodec_receive_frame(decoder.get(), picture.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return std::nullopt;
        if (result < 0)
            ++errors;
        else if (const auto number = wholeFrame(*picture))
            return DecodedFrame{std::move(picture), *number};
    }
    return std::nullopt;
}

/// The number of the movie's frame that `picture` is; nothing where it is none, or not whole.
std::optional<std::size_t> FrameDecoder::wholeFrame(const AVFrame& picture) const {
    if (picture.decode_error_flags != 0 || (picture.flags & AV_FRAME_FLAG_CORRUPT) != 0)
        return std::nullopt;
    const auto position = static_cast<std::size_t>(picture.pts);
    const auto number = index.frameOfPacket(position);
    return number && index.packet(position).showingTime >= firstTime ? number : std::nullopt;
}

}  // namespace Morvane::Worker
