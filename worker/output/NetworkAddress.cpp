#include "worker/output/NetworkAddress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>

#include "worker/Status.h"

namespace Morvane::Worker {

namespace {

constexpr std::string_view prefix = "Network ";
constexpr std::size_t longestHost = 200;  // characters; the name of a lock file must hold it

// Nothing else: the host becomes part of a URL, where other characters would begin options.
bool isHostCharacter(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) || character == '.' || character == '-' ||
           character == '_' || character == ':';
}

bool isHost(std::string_view host) {
    return !host.empty() && host.size() <= longestHost &&
           std::all_of(host.begin(), host.end(), isHostCharacter);
}

/// 0 where `text` is not a port number.
int portOf(std::string_view text) {
    int port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole && port >= 1 && port <= 65535 ? port : 0;
}

/// The host before the last colon. IPv6 needs its brackets, since it has colons of its own.
std::string_view hostOf(std::string_view text) {
    if (text.size() > 2 && text.front() == '[' && text.back() == ']')
        return text.substr(1, text.size() - 2);
    return text.find(':') == std::string_view::npos ? text : std::string_view();
}

}  // namespace

std::string NetworkAddress::text() const {
    return host.find(':') == std::string::npos ? fmt::format("{}:{}", host, port)
                                               : fmt::format("[{}]:{}", host, port);
}

NetworkAddress NetworkAddress::fromDeviceName(const std::string& name) {
    if (name.compare(0, prefix.size(), prefix) != 0)
        return {};
    std::string_view address = std::string_view(name).substr(prefix.size());
    address = address.substr(0, address.find(' '));
    const std::size_t colon = address.rfind(':');
    if (colon != std::string_view::npos) {
        const std::string_view host = hostOf(address.substr(0, colon));
        const int port = portOf(address.substr(colon + 1));
        if (isHost(host) && port != 0)
            return {std::string(host), port};
    }
    throw StatusError(Status::BadArgument,
                      fmt::format("cannot send to \"{}\": it is not \"Network HOST:PORT\"", name));
}

}  // namespace Morvane::Worker
