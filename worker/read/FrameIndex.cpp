#include "worker/read/FrameIndex.h"

extern "C" {
#include <libavcodec/codec_desc.h>
}

#include <algorithm>
#include <iterator>
#include <numeric>

#include "worker/read/MovieInput.h"
#include "worker/read/ShowingOrder.h"

namespace Morvane::Worker {

namespace {

/// When the packet is shown or, where it does not say, decoded; where it says nothing, after the one before.
std::int64_t timeOf(const AVPacket& packet, const std::vector<FrameIndex::Packet>& before) {
    if (packet.pts != AV_NOPTS_VALUE)
        return packet.pts;
    if (packet.dts != AV_NOPTS_VALUE)
        return packet.dts;
    return before.empty() ? 0 : before.back().seekTime + 1;
}

bool reorders(AVCodecID codec) {
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
    return descriptor == nullptr || (descriptor->props & AV_CODEC_PROP_REORDER) != 0;
}

/// Some formats do not tell when a packet is shown, and only decoding does.
void orderByDecoding(std::vector<FrameIndex::Packet>& packets, const MovieInput& movie) {
    for (FrameIndex::Packet& packet : packets)
        packet.shown = false;
    std::int64_t time = 0;
    for (const std::size_t position : showingOrderByDecoding(movie))
        if (position < packets.size()) {
            packets[position].shown = true;
            packets[position].showingTime = time++;
        }
}

}  // namespace

FrameIndex::Identity FrameIndex::identify(const MovieInput& input, const AVPacket& packet) {
    // Other formats' times are partly guessed, from what was read before.
    return {packet.pos, packet.size, input.isQuickTime() ? packet.dts : 0};
}

FrameIndex FrameIndex::ofMovie(const MovieInput& movie) {
    const std::unique_ptr<MovieInput> input = movie.openAgain();
    input->listOnly();
    const PacketPointer packet(requireMemory(av_packet_alloc()));
    std::vector<Packet> listed;
    bool allTold = true;
    while (input->readPacket(*packet)) {
        const std::int64_t time = timeOf(*packet, listed);
        listed.push_back({identify(*input, *packet), time, time, (packet->flags & AV_PKT_FLAG_KEY) != 0,
                          (packet->flags & AV_PKT_FLAG_DISCARD) == 0});
        allTold = allTold && packet->pts != AV_NOPTS_VALUE;
    }
    if (!allTold && reorders(input->video().codecpar->codec_id))
        orderByDecoding(listed, movie);
    return FrameIndex(std::move(listed));
}

FrameIndex::FrameIndex(std::vector<Packet> listed) : packets(std::move(listed)), byIdentity(packets.size()) {
    for (std::size_t position = 0; position < packets.size(); ++position)
        if (packets[position].shown)
            frames.push_back(position);
    std::stable_sort(frames.begin(), frames.end(), [this](std::size_t left, std::size_t right) {
        return packets[left].showingTime < packets[right].showingTime;
    });
    frameNumber.assign(packets.size(), frames.size());
    for (std::size_t frame = 0; frame < frames.size(); ++frame)
        frameNumber[frames[frame]] = frame;
    std::iota(byIdentity.begin(), byIdentity.end(), std::size_t{0});
    std::sort(byIdentity.begin(), byIdentity.end(), [this](std::size_t left, std::size_t right) {
        return packets[left].identity < packets[right].identity;
    });
}

std::optional<std::size_t> FrameIndex::frameOfPacket(std::size_t position) const {
    if (position >= packets.size() || frameNumber[position] == frames.size())
        return std::nullopt;
    return frameNumber[position];
}

std::size_t FrameIndex::startFor(std::size_t frame) const {
    const std::size_t wanted = packetOfFrame(frame);
    for (std::size_t position = wanted + 1; position-- > 0;)
        if (packets[position].key && packets[position].showingTime <= packets[wanted].showingTime)
            return position;
    return 0;
}

std::size_t FrameIndex::keyBefore(std::size_t position) const {
    while (position-- > 0)
        if (packets[position].key)
            return position;
    return 0;
}

std::optional<std::size_t> FrameIndex::find(const Identity& identity) const {
    const auto less = [this](std::size_t position, const Identity& wanted) {
        return packets[position].identity < wanted;
    };
    const auto found = std::lower_bound(byIdentity.begin(), byIdentity.end(), identity, less);
    const auto isWanted = [&](auto place) {
        return place != byIdentity.end() && !(identity < packets[*place].identity);
    };
    if (!isWanted(found) || isWanted(std::next(found)))
        return std::nullopt;
    return *found;
}

}  // namespace Morvane::Worker
