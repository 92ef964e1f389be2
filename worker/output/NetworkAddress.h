#pragma once

#include <string>

namespace Morvane::Worker {

/// Where a network device sends to. A plain value.
struct NetworkAddress {
    std::string host = "127.0.0.1";  ///< a name or an address; IPv6 without its brackets
    int port = 5004;

    /// "127.0.0.1:5004", "[::1]:5004".
    std::string text() const;

    /// The address in a device's name: of "Network HOST:PORT", maybe followed by a blank and any further
    /// text, it is HOST:PORT; every other name means the default, which no other machine can hear. Throws
    /// StatusError (BadArgument) where a name begins with "Network " and no address follows.
    static NetworkAddress fromDeviceName(const std::string& name);

    friend bool operator==(const NetworkAddress&, const NetworkAddress&) = default;
};

}  // namespace Morvane::Worker
