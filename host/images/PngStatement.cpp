#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "host/images/FileBytes.h"
#include "host/images/IntegerHeader.h"
#include "host/images/PngHeader.h"
#include "host/images/StatedValues.h"

namespace Corvel {
namespace {

// One chunk in front of the pixels.
struct Chunk {
    std::string_view type() const { return {reinterpret_cast<const char*>(bytes.data()), 4}; }
    std::string_view data() const {
        return {reinterpret_cast<const char*>(bytes.data()) + 4, bytes.size() - 8};
    }
    std::uint32_t numberAt(std::size_t offset) const { return pngNumberAt(bytes.data() + 4 + offset); }

    // Four letters, the data, the check.
    std::vector<unsigned char> bytes;
};

// False for one that is damaged, and for one that is too long to be usual.
bool readChunk(const FileBytes& file, std::uint64_t at, Chunk& chunk) {
    constexpr std::uint32_t longest = 65536;
    unsigned char length[4];
    if (!file.read(at, length, sizeof length) || pngNumberAt(length) > longest) {
        return false;
    }
    chunk.bytes.resize(pngNumberAt(length) + pngBytesAround - sizeof length);
    const std::size_t checked = chunk.bytes.size() - 4;
    return file.read(at + sizeof length, chunk.bytes.data(), chunk.bytes.size()) &&
           libdeflate_crc32(0, chunk.bytes.data(), checked) == pngNumberAt(chunk.bytes.data() + checked);
}

bool isPixels(const FileBytes& file, std::uint64_t at) {
    char type[4];
    return file.read(at + 4, type, sizeof type) && std::string_view(type, sizeof type) == "IDAT";
}

// What the chunks say together.
struct Statement {
    bool saysSrgb = false;
    bool saysGamma = false;
    Metadata metadata{};
};

// A text by which nobody but people goes, or one of the host's own (LibraryWriter.cpp).
bool readText(std::string_view data, Statement& statement) {
    constexpr std::string_view plain[] = {"Author",   "Comment",     "Copyright",   "Creation Time",
                                          "Software", "date:create", "date:modify", "date:timestamp",
                                          "Title",    "Description", "Source",      "Exif:ImageHistory"};
    const std::size_t end = data.find('\0');
    if (end == std::string_view::npos) {
        return false;
    }
    const std::string_view keyword = data.substr(0, end);
    const std::string text(data.substr(end + 1, data.find('\0', end + 1) - end - 1));
    if (keyword == "timecode") {
        return statement.metadata.emplace("input/timecode", text).second;
    }
    if (keyword == "reelName" || keyword == "dpx:InputDevice") {
        return statement.metadata.emplace("quicktime/reel", text).first->second == text;
    }
    return (keyword == "oiio:ColorSpace" && text == "sRGB") ||
           std::find(std::begin(plain), std::end(plain), keyword) != std::end(plain);
}

// Whether the chunk is a usual one that says the usual.
bool readChunkData(const Chunk& chunk, Statement& statement) {
    constexpr std::uint32_t usualGamma = 45455;  // 1 / 2.2
    constexpr char srgbPrimaries[] =
        "\0\0\x7A\x26\0\0\x80\x84\0\0\xFA\0\0\0\x80\xE8"
        "\0\0\x75\x30\0\0\xEA\x60\0\0\x3A\x98\0\0\x17\x70";
    const std::string_view type = chunk.type();
    const std::string_view data = chunk.data();
    if (type == "tEXt") {
        return readText(data, statement);
    }
    if (type == "gAMA" && data.size() == 4 && !statement.saysGamma) {
        statement.saysGamma = true;
        return chunk.numberAt(0) == usualGamma;
    }
    if (type == "sRGB" && data.size() == 1 && !statement.saysSrgb) {
        statement.saysSrgb = true;
        return data[0] >= 0 && data[0] <= 3;
    }
    if (type == "cHRM") {
        return data == std::string_view(srgbPrimaries, sizeof srgbPrimaries - 1);
    }
    if (type == "pHYs" && data.size() == 9) {
        return chunk.numberAt(0) == chunk.numberAt(4) && chunk.numberAt(0) != 0;
    }
    if (type == "oFFs" && data.size() == 9) {
        return chunk.numberAt(0) == 0 && chunk.numberAt(4) == 0;
    }
    return type == "tIME" || type == "bKGD";
}

// The chunks from behind the header to the pixels.
bool readChunks(const FileBytes& file, std::uint64_t at, Statement& statement) {
    constexpr int most = 100;
    Chunk chunk;
    for (int i = 0; i < most; ++i) {
        if (isPixels(file, at)) {
            return true;
        }
        if (!readChunk(file, at, chunk) || !readChunkData(chunk, statement)) {
            return false;
        }
        at += chunk.bytes.size() + 4;
    }
    return false;
}

}  // namespace

std::optional<IntegerHeader> readPngHeader(const std::string& path) {
    const FileBytes file(path);
    std::array<unsigned char, pngSignature.size()> begin{};
    Chunk first;
    if (!file.isOpen() || !file.read(0, begin.data(), begin.size()) || begin != pngSignature ||
        !readChunk(file, begin.size(), first) || first.type() != "IHDR" ||
        first.data().size() != pngHeaderBytes) {
        return std::nullopt;
    }
    const PngHeader stored = pngHeaderAt(first.bytes.data() + 4);
    constexpr std::uint32_t most = 1'000'000;  // libpng takes no more
    Statement statement;
    if (stored.channels == 0 || (stored.bits != 8 && stored.bits != 16) || stored.width > most ||
        stored.height > most ||
        !readChunks(file, begin.size() + pngBytesAround + pngHeaderBytes, statement)) {
        return std::nullopt;
    }
    const bool exponent = statement.saysGamma && !statement.saysSrgb;
    std::erase_if(statement.metadata, [](const auto& entry) { return entry.second.empty(); });
    return IntegerHeader{.width = static_cast<int>(stored.width),
                         .height = static_cast<int>(stored.height),
                         .channels = stored.channels,
                         .bits = stored.bits,
                         .straightAlpha = true,
                         .curve = exponent ? "gamma2.2" : "srgb",
                         .colourSpace = exponent ? "Gamma2.2" : "",
                         .metadata = statement.metadata};
}

}  // namespace Corvel
