#pragma once

#include "worker/movie/AtomWriter.h"

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

namespace Morvane::Worker {

/// An atom in memory; both views point into the bytes that it was found in.
struct Atom {
    std::uint32_t type = 0;
    ByteView whole;  ///< with size and type
    ByteView body;
};

/// Reads big-endian numbers one after the other. What a file says is not trusted: reading past the end throws
/// StatusError (InputOutput).
class AtomCursor {
public:
    explicit AtomCursor(ByteView source) : rest(source) {}

    std::uint8_t u8();
    std::uint16_t u16();
    std::uint32_t u32();
    std::uint64_t u64();
    ByteView take(std::size_t count);
    std::size_t remaining() const { return rest.size(); }

private:
    ByteView rest;
};

/// The atoms in `body`, in order. Throws StatusError (InputOutput) where they do not fill it exactly; four
/// closing zero bytes, which old writers leave, are accepted.
std::vector<Atom> childAtoms(ByteView body);

/// The first atom reached by following `path`, such as {atomType("mdia"), atomType("minf")}.
std::optional<Atom> findAtom(ByteView body, std::initializer_list<std::uint32_t> path);

/// As findAtom; throws StatusError (InputOutput) when there is none.
Atom requireAtom(ByteView body, std::initializer_list<std::uint32_t> path);

}  // namespace Morvane::Worker
