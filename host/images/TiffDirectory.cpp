#include "host/images/TiffDirectory.h"

#include <algorithm>
#include <cstring>

#include "host/images/FileBytes.h"

namespace Corvel {
namespace {

constexpr std::size_t entryBytes = 12;
constexpr std::uint32_t mostEntries = 100;
constexpr std::uint32_t mostValues = 1 << 20;

enum Type { Short = 3, Long = 4, Fraction = 5, Directory = 13 };

}  // namespace

std::optional<std::uint32_t> TiffEntry::same() const {
    const bool one = !values.empty() && std::all_of(values.begin(), values.end(),
                                                    [&](std::uint32_t value) { return value == values[0]; });
    return one ? std::optional(values[0]) : std::nullopt;
}

std::optional<std::uint32_t> TiffDirectory::number(std::uint16_t tag,
                                                   std::optional<std::uint32_t> otherwise) const {
    const auto found = entries.find(tag);
    return found == entries.end() ? otherwise : found->second.same();
}

TiffDirectories::TiffDirectories(const FileBytes& opened) : file(opened) {
    constexpr std::uint32_t version = 42;
    unsigned char header[8];
    if (!file.isOpen() || !file.read(0, header, sizeof header)) {
        return;
    }
    bigEndian = std::memcmp(header, "MM", 2) == 0;
    if ((bigEndian || std::memcmp(header, "II", 2) == 0) && number(header + 2, 2) == version) {
        firstOffset = number(header + 4, 4);
    }
}

std::optional<TiffDirectory> TiffDirectories::first() const {
    return firstOffset == 0 ? std::nullopt : at(firstOffset);
}

std::optional<TiffDirectory> TiffDirectories::at(std::uint32_t offset) const {
    unsigned char size[2];
    if (!file.read(offset, size, sizeof size) || number(size, 2) > mostEntries) {
        return std::nullopt;
    }
    const std::size_t count = number(size, 2);
    std::vector<unsigned char> bytes(count * entryBytes + 4);
    if (!file.read(std::uint64_t{offset} + 2, bytes.data(), bytes.size())) {
        return std::nullopt;
    }
    TiffDirectory directory;
    std::uint32_t last = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned char* const place = bytes.data() + i * entryBytes;
        const std::uint32_t tag = number(place, 2);
        TiffEntry entry{static_cast<std::uint16_t>(number(place + 2, 2)), number(place + 4, 4)};
        if (tag <= last || !readValues(place + 8, entry)) {
            return std::nullopt;
        }
        last = tag;
        directory.entries.emplace(static_cast<std::uint16_t>(tag), std::move(entry));
    }
    directory.next = number(bytes.data() + count * entryBytes, 4);
    return directory;
}

std::uint32_t TiffDirectories::number(const unsigned char* bytes, std::size_t size) const {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i) {
        value = value << 8 | bytes[bigEndian ? i : size - 1 - i];
    }
    return value;
}

// Values of up to four bytes are in the entry itself, others where it says.
bool TiffDirectories::readValues(const unsigned char* place, TiffEntry& entry) const {
    const std::size_t numbers = entry.type == Fraction ? 2 : 1;
    const std::size_t size = entry.type == Short ? 2 : 4;
    if (entry.type != Short && entry.type != Long && entry.type != Fraction && entry.type != Directory) {
        return true;
    }
    if (entry.count == 0 || entry.count > mostValues) {
        return false;
    }
    std::vector<unsigned char> bytes(entry.count * numbers * size);
    if (bytes.size() <= 4) {
        std::copy_n(place, bytes.size(), bytes.begin());
    } else if (!file.read(number(place, 4), bytes.data(), bytes.size())) {
        return false;
    }
    for (std::size_t at = 0; at < bytes.size(); at += size) {
        entry.values.push_back(number(bytes.data() + at, size));
    }
    return true;
}

}  // namespace Corvel
