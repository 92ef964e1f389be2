#include "worker/movie/AtomReader.h"

#include "worker/Status.h"

#include <fmt/core.h>

namespace Morvane::Worker {

namespace {

constexpr std::size_t headerBytes = 8;

std::string typeText(std::uint32_t type) {
    return {static_cast<char>(type >> 24), static_cast<char>(type >> 16), static_cast<char>(type >> 8),
            static_cast<char>(type)};
}

[[noreturn]] void damaged(const std::string& what) {
    throw StatusError(Status::InputOutput, "the movie's index is damaged: " + what);
}

}  // namespace

std::uint8_t AtomCursor::u8() {
    return take(1)[0];
}

std::uint16_t AtomCursor::u16() {
    const ByteView two = take(2);
    return static_cast<std::uint16_t>(two[0] << 8 | two[1]);
}

std::uint32_t AtomCursor::u32() {
    const std::uint32_t high = u16();
    return high << 16 | u16();
}

std::uint64_t AtomCursor::u64() {
    const std::uint64_t high = u32();
    return high << 32 | u32();
}

ByteView AtomCursor::take(std::size_t count) {
    if (count > rest.size()) {
        damaged("an atom ends too soon");
    }
    const ByteView taken = rest.first(count);
    rest = rest.subspan(count);
    return taken;
}

std::vector<Atom> childAtoms(ByteView body) {
    std::vector<Atom> atoms;
    while (!body.empty()) {
        AtomCursor cursor(body);
        std::uint64_t size = cursor.u32();
        if (size == 0 && body.size() == 4) {
            break;
        }
        const std::uint32_t type = cursor.u32();
        std::size_t header = headerBytes;
        if (size == 1) {
            size = cursor.u64();
            header += 8;
        }
        if (size < header || size > body.size()) {
            damaged(fmt::format("atom \"{}\" states a size of {} bytes", typeText(type), size));
        }
        const ByteView whole = body.first(static_cast<std::size_t>(size));
        atoms.push_back({type, whole, whole.subspan(header)});
        body = body.subspan(static_cast<std::size_t>(size));
    }
    return atoms;
}

std::optional<Atom> findAtom(ByteView body, std::initializer_list<std::uint32_t> path) {
    std::optional<Atom> found;
    for (const std::uint32_t type : path) {
        found.reset();
        for (const Atom& atom : childAtoms(body)) {
            if (atom.type == type) {
                found = atom;
                break;
            }
        }
        if (!found) {
            return std::nullopt;
        }
        body = found->body;
    }
    return found;
}

Atom requireAtom(ByteView body, std::initializer_list<std::uint32_t> path) {
    const std::optional<Atom> found = findAtom(body, path);
    if (!found) {
        damaged(fmt::format("atom \"{}\" is missing", typeText(*(path.end() - 1))));
    }
    return *found;
}

}  // namespace Morvane::Worker
