#include "worker/movie/StoredMovie.h"

#include "worker/movie/AtomReader.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <set>

namespace Morvane::Worker {

namespace {

/// The fields of a video sample description that matter (QuickTime File Format, "Video Sample Description").
struct Description {
    std::string type;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t depth = 0;
    std::string compressor;
    std::map<std::string, Bytes> extensions;  ///< atoms by their type
};

std::string textOf(ByteView bytes) {
    return {bytes.begin(), bytes.end()};
}

Description read(const IndexTrack& track) {
    AtomCursor stsd(track.description);
    stsd.take(16 + 4);
    Description description;
    description.type = textOf(stsd.take(4));
    stsd.take(8 + 16);
    description.width = stsd.u16();
    description.height = stsd.u16();
    stsd.take(14);
    const std::size_t length = stsd.u8();
    description.compressor = textOf(stsd.take(31)).substr(0, length);
    description.depth = stsd.u16();
    stsd.u16();
    for (const Atom& atom : childAtoms(stsd.take(stsd.remaining()))) {
        description.extensions[textOf(atom.whole.subspan(4, 4))].assign(atom.body.begin(), atom.body.end());
    }
    return description;
}

std::string meaningOf(const std::string& extension) {
    static const std::map<std::string, std::string> meanings = {
        {"colr", "colour"},         {"pasp", "pixel aspect"}, {"fiel", "fields"},
        {"avcC", "codec set-up"},   {"hvcC", "codec set-up"}, {"esds", "codec set-up"},
        {"clap", "clean aperture"}, {"gama", "gamma"}};
    const auto found = meanings.find(extension);
    return fmt::format("{} ({})", found == meanings.end() ? "description" : found->second, extension);
}

std::string hexadecimal(const Bytes& bytes) {
    constexpr std::size_t most = 24;
    std::string text;
    for (std::size_t i = 0; i < std::min(most, bytes.size()); ++i) {
        text += fmt::format("{:02x}", bytes[i]);
    }
    return bytes.size() > most ? text + "…" : text.empty() ? "nothing" : text;
}

class Differences {
public:
    template <typename Value>
    void compare(const std::string& what, const Value& first, const Value& other) {
        if (first != other) {
            found.push_back(fmt::format("{}: {} and {}", what, first, other));
        }
    }

    std::vector<std::string> found;
};

}  // namespace

std::vector<std::string> differencesBetween(const StoredMovie& first, const StoredMovie& other) {
    const Description a = read(first.pictures);
    const Description b = read(other.pictures);
    Differences differences;
    differences.compare("codec", a.type, b.type);
    differences.compare("size", fmt::format("{} x {}", a.width, a.height),
                        fmt::format("{} x {}", b.width, b.height));
    differences.compare("depth", a.depth, b.depth);
    differences.compare("compressor", a.compressor, b.compressor);
    differences.compare("frame rate", fmt::format("{}/{}", first.pictures.timeScale, first.ticksPerFrame),
                        fmt::format("{}/{}", other.pictures.timeScale, other.ticksPerFrame));
    differences.compare("alpha",
                        first.metadata.count(alphaMetadataKey) ? first.metadata.at(alphaMetadataKey) : "",
                        other.metadata.count(alphaMetadataKey) ? other.metadata.at(alphaMetadataKey) : "");
    std::set<std::string> extensions;
    for (const auto* description : {&a, &b}) {
        for (const auto& [type, bytes] : description->extensions) {
            extensions.insert(type);
        }
    }
    for (const std::string& type : extensions) {
        const auto inA = a.extensions.find(type);
        const auto inB = b.extensions.find(type);
        const Bytes bytesA = inA == a.extensions.end() ? Bytes{} : inA->second;
        const Bytes bytesB = inB == b.extensions.end() ? Bytes{} : inB->second;
        if (bytesA != bytesB || (inA == a.extensions.end()) != (inB == b.extensions.end())) {
            differences.found.push_back(
                fmt::format("{}: {} and {}", meaningOf(type), hexadecimal(bytesA), hexadecimal(bytesB)));
        }
    }
    return differences.found;
}

}  // namespace Morvane::Worker
