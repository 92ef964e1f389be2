#include "MovieAtoms.h"

#include <fmt/format.h>

namespace Morvane::Tests {

std::uint64_t Fields::number(std::size_t width) {
    if (left() < width) {
        throw std::runtime_error("an atom is too short for its fields");
    }
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) {
        value = value << 8 | static_cast<unsigned char>(bytes[position++]);
    }
    return value;
}

Atom atomAt(const Bytes& bytes, std::int64_t offset, std::int64_t room) {
    Fields fields(bytes);
    Atom atom;
    atom.offset = offset;
    atom.size = fields.u32();
    fields.skip(4);
    atom.type = bytes.substr(4, 4);
    if (atom.size == 1) {
        atom.size = static_cast<std::int64_t>(fields.number(8));
        atom.header = 16;
    }
    if (atom.size < atom.header || atom.size > room) {
        throw std::runtime_error(
            fmt::format("atom \"{}\" of {} bytes does not fit into {}", atom.type, atom.size, room));
    }
    return atom;
}

std::vector<Atom> children(const Bytes& body) {
    std::vector<Atom> atoms;
    for (std::size_t offset = 0; offset < body.size();) {
        const Bytes rest = body.substr(offset);
        Atom atom = atomAt(rest, static_cast<std::int64_t>(offset), static_cast<std::int64_t>(rest.size()));
        atom.body = rest.substr(static_cast<std::size_t>(atom.header),
                                static_cast<std::size_t>(atom.size - atom.header));
        offset += static_cast<std::size_t>(atom.size);
        atoms.push_back(std::move(atom));
    }
    return atoms;
}

const Atom* find(const std::vector<Atom>& atoms, const std::string& type) {
    const auto found =
        std::find_if(atoms.begin(), atoms.end(), [&](const Atom& atom) { return atom.type == type; });
    return found == atoms.end() ? nullptr : &*found;
}

const Bytes& need(const std::vector<Atom>& atoms, const std::string& type) {
    const Atom* atom = find(atoms, type);
    if (!atom) {
        throw std::runtime_error("atom \"" + type + "\" is missing");
    }
    if (std::count_if(atoms.begin(), atoms.end(), [&](const Atom& n) { return n.type == type; }) != 1) {
        throw std::runtime_error("atom \"" + type + "\" is there twice");
    }
    return atom->body;
}

}  // namespace Morvane::Tests
