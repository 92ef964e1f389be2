#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace Corvel {

class FileBytes;

/// One entry of a TIFF directory.
struct TiffEntry {
    std::uint16_t type = 0;
    std::uint32_t count = 0;
    /// The values of whole numbers of 16 and 32 bits; the parts of fractions, one after the other. Of other
    /// types none is read.
    std::vector<std::uint32_t> values{};

    /// The number that all values are; nothing where they differ or there is none.
    std::optional<std::uint32_t> same() const;
};

/// A directory of a TIFF file (TIFF 6.0), by tag.
struct TiffDirectory {
    std::map<std::uint16_t, TiffEntry> entries{};
    std::uint32_t next = 0;  ///< where the one after it is, 0 for the last

    /// What all values of an entry are; `otherwise` where there is no such entry. Nothing where they differ.
    std::optional<std::uint32_t> number(std::uint16_t tag, std::optional<std::uint32_t> otherwise) const;
};

/// The first directory of a file, and those that entries point to. Nothing for a file of another kind (larger
/// ones with 64-bit offsets among them), and for a directory that is damaged, not in order or too large to be
/// usual.
class TiffDirectories {
public:
    explicit TiffDirectories(const FileBytes& file);

    std::optional<TiffDirectory> first() const;
    std::optional<TiffDirectory> at(std::uint32_t offset) const;

private:
    std::uint32_t number(const unsigned char* bytes, std::size_t size) const;
    bool readValues(const unsigned char* place, TiffEntry& entry) const;

    const FileBytes& file;
    bool bigEndian = false;
    std::uint32_t firstOffset = 0;  // 0: no TIFF file
};

}  // namespace Corvel
