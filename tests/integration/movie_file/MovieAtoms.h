#pragma once

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace Morvane::Tests {

using Bytes = std::string;

/// An atom of a QuickTime movie.
struct Atom {
    std::string type;
    std::int64_t offset = 0;  ///< in the file, or in its parent's bytes
    std::int64_t header = 8;  ///< bytes
    std::int64_t size = 0;    ///< bytes, with the header
    Bytes body;               ///< empty for media
};

/// Takes big-endian numbers out of an atom's bytes, one after the other. Throws std::runtime_error at the
/// end.
class Fields {
public:
    explicit Fields(const Bytes& source) : bytes(source) {}

    /// Of `width` bytes.
    std::uint64_t number(std::size_t width);
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::int64_t wide(bool eight) { return static_cast<std::int64_t>(number(eight ? 8 : 4)); }
    void skip(std::size_t count) { position += count; }
    std::size_t left() const { return bytes.size() - std::min(position, bytes.size()); }

private:
    const Bytes& bytes;
    std::size_t position = 0;
};

/// The atom at the beginning of `bytes`, without its body; `offset` is where that is, and `room` how many
/// bytes its parent has from there on. Throws std::runtime_error where it does not fit.
Atom atomAt(const Bytes& bytes, std::int64_t offset, std::int64_t room);

/// The atoms that a body consists of, with their bodies. Throws std::runtime_error where they do not nest.
std::vector<Atom> children(const Bytes& body);

/// The first of a type; null where there is none.
const Atom* find(const std::vector<Atom>& atoms, const std::string& type);

/// The body of the one atom of a type. Throws std::runtime_error unless there is exactly one.
const Bytes& need(const std::vector<Atom>& atoms, const std::string& type);

}  // namespace Morvane::Tests
