#include "worker/read/VideoDecoder.h"

extern "C" {
#include <libavcodec/codec_desc.h>
}

#include "worker/Status.h"

namespace Morvane::Worker {

CodecPointer openDecoder(const AVStream& stream, const std::string& path) {
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (codec == nullptr)
        throw StatusError(Status::CodecFailed, "cannot decode " + path + ": there is no decoder for " +
                                                   avcodec_get_name(stream.codecpar->codec_id));
    CodecPointer decoder(requireMemory(avcodec_alloc_context3(codec)));
    int result = avcodec_parameters_to_context(decoder.get(), stream.codecpar);
    decoder->thread_count = 0;  // as many as there are cores
    decoder->pkt_timebase = stream.time_base;
    if (result >= 0)
        result = avcodec_open2(decoder.get(), codec, nullptr);
    if (result < 0)
        throw StatusError(statusOfLibraryError(result, Status::CodecFailed),
                          "cannot decode " + path + ": " + libraryReason(result));
    return decoder;
}

bool isIntraOnly(AVCodecID codec) {
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
    return descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_INTRA_ONLY) != 0;
}

}  // namespace Morvane::Worker
