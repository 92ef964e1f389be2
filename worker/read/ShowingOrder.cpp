#include "worker/read/ShowingOrder.h"

#include <cerrno>
#include <cstdint>

#include "worker/read/MovieInput.h"
#include "worker/read/VideoDecoder.h"

namespace Morvane::Worker {

namespace {

void takeFrames(AVCodecContext& decoder, AVFrame& frame, std::vector<std::size_t>& order) {
    for (;;) {
        const int result = avcodec_receive_frame(&decoder, &frame);
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        if (result >= 0)
            order.push_back(static_cast<std::size_t>(frame.pts));
    }
}

}  // namespace

std::vector<std::size_t> showingOrderByDecoding(const MovieInput& movie) {
    const std::unique_ptr<MovieInput> input = movie.openAgain();
    BufferPool pictures;
    const CodecPointer decoder = openDecoder(input->video(), movie.source()->path, pictures);
    const PacketPointer packet(requireMemory(av_packet_alloc()));
    const FramePointer frame(requireMemory(av_frame_alloc()));
    std::vector<std::size_t> order;
    for (std::int64_t number = 0; input->readPacket(*packet); ++number) {
        // The decoder carries the number through to the frame.
        packet->pts = number;
        packet->dts = AV_NOPTS_VALUE;
        avcodec_send_packet(decoder.get(), packet.get());
        takeFrames(*decoder, *frame, order);
    }
    avcodec_send_packet(decoder.get(), nullptr);
    takeFrames(*decoder, *frame, order);
    return order;
}

}  // namespace Morvane::Worker
