#pragma once

#include <memory>
#include <string>
#include <vector>

#include "worker/LibavPointers.h"
#include "worker/output/NetworkAddress.h"
#include "worker/output/OutputDevice.h"
#include "worker/picture/PictureConverter.h"

namespace Morvane::Worker {

/// One stream to one address. A receiver can join at any time: a key picture with all headers comes twice a
/// second.
class NetworkPort : public OutputPort {
public:
    static constexpr const char* encoderName = "libx264";
    static constexpr const char* formatName = "mpegts";

    /// Opens encoder and socket; `serviceName` is what receivers show. Throws StatusError.
    NetworkPort(const OutputMode& mode, const NetworkAddress& address, const std::string& serviceName);
    ~NetworkPort() override;

    std::size_t pictureBytes() const override;
    void convert(const float* rgba, std::uint8_t* picture) override;
    /// Encodes, so that `show` only sends and frames leave as evenly as the clock runs.
    void prepare(const std::uint8_t* picture, std::int64_t frame) override;
    void show(const std::uint8_t* picture) override;
    void finish() override;

private:
    struct FreeStream {
        void operator()(AVFormatContext* context) const;
    };

    void openEncoder();
    void openStream(const std::string& serviceName);
    void encode(const AVFrame* frame);
    void sendEncoded();
    void check(int result) const;
    void describe(AVFrame& frame, std::uint8_t* memory) const;

    OutputMode mode;
    NetworkAddress address;
    EncodingPlan plan;
    PictureConverter converter;
    FramePointer converted;              ///< the request thread's view of a picture
    FramePointer prepared;               ///< the presentation thread's
    std::vector<PacketPointer> encoded;  ///< not sent yet
    CodecPointer encoder;
    std::unique_ptr<AVFormatContext, FreeStream> stream;
};

}  // namespace Morvane::Worker
