#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace Morvane::Worker {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// The number that an atom's four characters are.
constexpr std::uint32_t atomType(const char (&name)[5]) {
    std::uint32_t type = 0;
    for (int i = 0; i < 4; ++i) {
        type = type << 8 | static_cast<std::uint8_t>(name[i]);
    }
    return type;
}

/// Builds QuickTime atoms in memory: big-endian numbers, sizes filled in when an atom's body is complete.
/// Layouts follow Apple's QuickTime File Format document.
class AtomWriter {
public:
    void u8(std::uint32_t value);
    void u16(std::uint32_t value);
    void u32(std::uint64_t value);
    void u64(std::uint64_t value);
    void zeros(std::size_t count);
    void append(ByteView bytes);
    void text(std::string_view bytes);
    /// A length byte and the characters, cut at 255 bytes.
    void pascalText(std::string_view bytes);

    /// One atom: size, type, and what `body` writes.
    template <typename Body>
    void atom(std::uint32_t type, Body&& body) {
        const std::size_t start = begin(type);
        std::forward<Body>(body)();
        end(start);
    }

    /// An atom whose body starts with a version byte and three bytes of flags.
    template <typename Body>
    void fullAtom(std::uint32_t type, std::uint32_t version, std::uint32_t flags, Body&& body) {
        atom(type, [&] {
            u32(version << 24 | flags);
            std::forward<Body>(body)();
        });
    }

    const Bytes& bytes() const { return buffer; }
    Bytes take() { return std::move(buffer); }

private:
    std::size_t begin(std::uint32_t type);
    void end(std::size_t start);

    Bytes buffer;
};

}  // namespace Morvane::Worker
