#include "worker/output/NetworkDevice.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavformat/avio.h>
}

#include <cstring>

#include "worker/output/NetworkAddress.h"
#include "worker/output/NetworkPort.h"

namespace Morvane::Worker {

namespace {

constexpr int largestWidth = 4096;   // pixels
constexpr int largestHeight = 2160;  // pixels

bool canSendDatagrams() {
    void* iteration = nullptr;
    while (const char* protocol = avio_enum_protocols(&iteration, 1)) {
        if (std::strcmp(protocol, "udp") == 0)
            return true;
    }
    return false;
}

}  // namespace

std::vector<std::unique_ptr<OutputDevice>> NetworkDevice::findAll() {
    std::vector<std::unique_ptr<OutputDevice>> devices;
    if (avcodec_find_encoder_by_name(NetworkPort::encoderName) &&
        av_guess_format(NetworkPort::formatName, nullptr, nullptr) && canSendDatagrams())
        devices.push_back(std::make_unique<NetworkDevice>());
    return devices;
}

std::string NetworkDevice::name() const {
    return "Network " + NetworkAddress().text();
}

std::vector<OutputMode> NetworkDevice::modes() const {
    return standardModes(largestWidth, largestHeight);
}

std::string NetworkDevice::nameWhenOpened(const std::string& title) const {
    return "Network " + NetworkAddress::fromDeviceName(title).text();
}

std::string NetworkDevice::lockKey(const std::string& title) const {
    return "network-" + NetworkAddress::fromDeviceName(title).text();
}

std::unique_ptr<OutputPort> NetworkDevice::open(const OutputMode& mode, Presentation /*presentation*/,
                                                const std::string& title) const {
    return std::make_unique<NetworkPort>(mode, NetworkAddress::fromDeviceName(title),
                                         title.empty() ? name() : title);
}

}  // namespace Morvane::Worker
